#pragma once

#include <concepts>
#include <string>
#include <string_view>

namespace vlm::frame {

// Logs one line, "[vlm] " followed by the parts in order. Numbers are written in decimal. A line
// that there is no memory for is lost.
void logLine(std::initializer_list<std::string_view> parts) noexcept;

namespace detail {
inline std::string_view asText(std::string_view text) {
  return text;
}
template <std::integral T>
std::string asText(T number) {
  return std::to_string(number);
}
}  // namespace detail

template <class... Parts>
void log(const Parts&... parts) {
  logLine({std::string_view(detail::asText(parts))...});
}

}  // namespace vlm::frame
