#pragma once

#include <charconv>
#include <optional>
#include <string_view>

namespace vlm::tools {

// The number that a text is from its first character to its last; whole ones in the base given.
template <class Number, class... Base>
std::optional<Number> wholeNumber(std::string_view text, Base... base) {
  Number value{};
  const auto* end = text.data() + text.size();
  const auto parsed = std::from_chars(text.data(), end, value, base...);
  if (parsed.ec != std::errc{} || parsed.ptr != end) return std::nullopt;
  return value;
}

}  // namespace vlm::tools
