#pragma once

#include <optional>
#include <string>

namespace vlm::system {

// The identifier of this computer, as the platform writes it; nothing when it has none. Any thread.
std::optional<std::string> machineId();

}  // namespace vlm::system
