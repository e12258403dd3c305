#pragma once

#include <optional>
#include <string>

namespace vlm::platform::identity {

// The id of this installation of the system, in the text form of a UUID. Nothing where the system
// has none.
std::optional<std::string> machineUuid();

}  // namespace vlm::platform::identity
