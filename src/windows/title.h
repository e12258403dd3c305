#pragma once

#include <cstdint>
#include <span>
#include <string_view>

namespace vlm::windows {

// Copies a title into a zeroed field of fixed size, cut at a character boundary so that the text
// and at least one NUL fit. What is no UTF-8 at the cut is shortened until it is.
void vlmSetTitle(std::span<std::uint8_t> field, std::string_view title);

}  // namespace vlm::windows
