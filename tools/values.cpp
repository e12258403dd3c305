#include "values.h"

#include <charconv>
#include <cmath>
#include <limits>
#include <string_view>

namespace vlm::tools {
namespace {

// Takes a number from the front of the text.
template <class Number>
bool take(std::string_view& text, Number& value) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
  if (error != std::errc{}) return false;
  text.remove_prefix(static_cast<std::size_t>(end - text.data()));
  return true;
}

bool take(std::string_view& text, char expected) {
  if (text.empty() || text.front() != expected) return false;
  text.remove_prefix(1);
  return true;
}

bool take(std::string_view& text, BitRate& value) {
  double amount = 0;
  if (!take(text, amount)) return false;
  const double unit = take(text, 'k') ? 1e3 : take(text, 'M') ? 1e6 : 1;
  const double bps = std::round(amount * unit);
  if (!(bps >= 1 && bps <= std::numeric_limits<std::int32_t>::max())) return false;
  value.bitsPerSecond = static_cast<std::int32_t>(bps);
  return true;
}

bool take(std::string_view& text, Size& value) {
  return take(text, value.width) && take(text, 'x') && take(text, value.height) &&
         value.width > 0 && value.height > 0;
}

// No number at all is not.
bool isWithin(double value, double least, double most) {
  return value >= least && value <= most;
}

// What the X protocol can say of windows.
bool fitsScreen(std::int32_t coordinate) {
  return isWithin(coordinate, std::numeric_limits<std::int16_t>::min(),
                  std::numeric_limits<std::int16_t>::max());
}

bool takeMoment(std::string_view& text, double& seconds) {
  return take(text, '@') && take(text, seconds) && isWithin(seconds, 0, kMostSeconds);
}

}  // namespace

bool lexical_cast(const std::string& text, BitRate& value) {
  std::string_view rest = text;
  return take(rest, value) && rest.empty();
}

bool lexical_cast(const std::string& text, BitRateChange& value) {
  std::string_view rest = text;
  return take(rest, value.rate) && takeMoment(rest, value.seconds) && rest.empty();
}

bool lexical_cast(const std::string& text, Size& value) {
  std::string_view rest = text;
  return take(rest, value) && rest.empty();
}

bool lexical_cast(const std::string& text, SizeChange& value) {
  std::string_view rest = text;
  return take(rest, value.size) && takeMoment(rest, value.seconds) && rest.empty();
}

bool lexical_cast(const std::string& text, Placement& value) {
  std::string_view rest = text;
  if (!rest.empty() && rest.front() != '+' &&
      !(take(rest, value.size.emplace()) && fitsScreen(value.size->width) &&
        fitsScreen(value.size->height))) {
    return false;
  }
  if (rest.empty()) return value.size.has_value();
  auto& [x, y] = value.position.emplace();
  return take(rest, '+') && take(rest, x) && take(rest, '+') && take(rest, y) && rest.empty() &&
         fitsScreen(x) && fitsScreen(y);
}

}  // namespace vlm::tools
