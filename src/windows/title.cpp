#include "windows/title.h"

#include <algorithm>
#include <cstddef>

namespace vlm::windows {
namespace {

struct Form {
  std::size_t length;      // bytes of the whole character; 0 for no first byte of one
  std::uint8_t secondMin;  // the second byte's range rules out overlong forms and surrogates
  std::uint8_t secondMax;
};

Form formOf(std::uint8_t first) {
  if (first < 0x80) return {1, 0x80, 0xBF};
  if (first < 0xC2) return {0, 0, 0};
  if (first < 0xE0) return {2, 0x80, 0xBF};
  if (first == 0xE0) return {3, 0xA0, 0xBF};
  if (first == 0xED) return {3, 0x80, 0x9F};
  if (first < 0xF0) return {3, 0x80, 0xBF};
  if (first == 0xF0) return {4, 0x90, 0xBF};
  if (first < 0xF4) return {4, 0x80, 0xBF};
  if (first == 0xF4) return {4, 0x80, 0x8F};
  return {0, 0, 0};
}

// The length of the valid UTF-8 at the beginning of `text`, whole characters only.
std::size_t validPrefix(std::string_view text) {
  const auto byte = [&](std::size_t at) { return static_cast<std::uint8_t>(text[at]); };
  std::size_t at = 0;
  while (at < text.size()) {
    const Form form = formOf(byte(at));
    if (form.length == 0 || at + form.length > text.size()) break;
    bool valid = true;
    for (std::size_t i = 1; i < form.length; ++i) {
      const std::uint8_t low = i == 1 ? form.secondMin : 0x80;
      const std::uint8_t high = i == 1 ? form.secondMax : 0xBF;
      valid = valid && byte(at + i) >= low && byte(at + i) <= high;
    }
    if (!valid) break;
    at += form.length;
  }
  return at;
}

}  // namespace

void vlmSetTitle(std::span<std::uint8_t> field, std::string_view title) {
  const auto cut = title.substr(0, field.size() - 1);
  std::ranges::copy(cut.substr(0, validPrefix(cut)), field.begin());
}

}  // namespace vlm::windows
