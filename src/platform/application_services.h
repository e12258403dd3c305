#pragma once

#include <string_view>

#include "platform/cf_value.h"

namespace vlm::platform {

// Whether this process may watch and drive the windows and the input of others. Any thread.
bool AXIsProcessTrusted();
// The same; with the prompt option true a system that can grant the right asks the user for it.
inline constexpr std::string_view kAXTrustedCheckOptionPrompt = "AXTrustedCheckOptionPrompt";
bool AXIsProcessTrustedWithOptions(const CFValue& options);

}  // namespace vlm::platform
