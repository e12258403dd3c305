#pragma once

#include <cstdint>
#include <string>

#include "geometry.h"

// Values as they are written on the command line. The parser of the program finds lexical_cast
// beside each type.
namespace vlm::tools {

struct BitRate {
  std::int32_t bitsPerSecond = 0;
};
// 2M@5: from the fifth second on
struct BitRateChange {
  BitRate rate;
  double seconds = 0;
};
// 1280x720@5
struct SizeChange {
  Size size;
  double seconds = 0;
};

// What timers of milliseconds reach.
inline constexpr double kMostSeconds = 4e6;

// 800000, 2500k, 2.5M
bool lexical_cast(const std::string& text, BitRate& value);
bool lexical_cast(const std::string& text, BitRateChange& value);
// 1280x720
bool lexical_cast(const std::string& text, Size& value);
bool lexical_cast(const std::string& text, SizeChange& value);
// 640x360, +20+40 or 640x360+20+40
bool lexical_cast(const std::string& text, Placement& value);

}  // namespace vlm::tools
