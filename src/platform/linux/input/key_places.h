#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

namespace vlm::platform::input {

// macOS virtual key codes name places on a keyboard, and so do XKB's key names and the kernel's
// codes, whatever the layout gives them to mean. Keys that only one side knows have no counterpart.
std::optional<std::string_view> xkbKeyName(std::uint16_t macKeyCode);
std::optional<std::uint16_t> evdevCode(std::uint16_t macKeyCode);
std::optional<std::uint16_t> macKeyCode(std::string_view xkbKeyName);

}  // namespace vlm::platform::input
