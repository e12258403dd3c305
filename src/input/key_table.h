#pragma once

#include <cstdint>

namespace vlm::input {

// The Windows-style virtual-key code of the key with this macOS virtual key code; the code itself
// for keys that have no translation.
std::int32_t vlmTranslateKey(std::uint16_t macKeyCode);

}  // namespace vlm::input
