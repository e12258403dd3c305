#pragma once

#include <cstdint>
#include <span>

#include "VelmoraMacNative.h"

namespace vlm::windows {

// Writes the visible, non-minimised windows of a process to the front of `out` and returns their
// number. Each has the window server's number of the window whose rectangle is nearest to its own;
// windows without such a neighbour are left out. 0 when the process can't be read. Any thread.
std::int32_t enumerate(std::int32_t pid, std::span<VlmWindowEntry> out);

}  // namespace vlm::windows
