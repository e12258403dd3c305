#include "bench/content/page.h"

#include <algorithm>

namespace vlm::bench {
namespace {

constexpr std::size_t kTile = 240;
constexpr std::size_t kMargin = 16;
constexpr std::size_t kLine = 16;
constexpr std::uint32_t kPaper = 0xFAFAF5;
constexpr std::uint32_t kInk = 0x202428;

// A small generator with a fixed course.
class Random {
 public:
  std::uint32_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return state_;
  }
  std::uint32_t below(std::uint32_t limit) { return next() % limit; }

 private:
  std::uint32_t state_ = 0x2545F491;
};

struct Area {
  std::uint32_t* corner;
  std::size_t pixelsPerRow;
  std::size_t width;
  std::size_t height;

  std::uint32_t& at(std::size_t x, std::size_t y) const { return corner[y * pixelsPerRow + x]; }
};

// Letters of 6 x 9 pixels: a stem, and strokes at random heights.
void paintLetter(const Area& area, std::size_t x, std::size_t y, Random& random) {
  const std::uint32_t shape = random.next();
  for (std::size_t row = 0; row < 9; ++row) area.at(x, y + row) = kInk;
  for (std::size_t stroke = 0; stroke < 3; ++stroke) {
    const std::size_t row = (shape >> (4 * stroke)) % 9;
    std::fill_n(&area.at(x, y + row), 2 + (shape >> (20 + stroke)) % 3, kInk);
  }
}

void paintText(const Area& area, Random& random) {
  for (std::size_t y = kMargin; y + kLine < area.height; y += kLine) {
    const std::size_t end = area.width - kMargin - random.below(60);
    for (std::size_t x = kMargin; x + 8 < end; x += 7) {
      if (random.below(6) != 0) paintLetter(area, x, y, random);
    }
  }
}

void paintPhoto(const Area& area, Random& random) {
  const std::uint32_t red = random.below(200);
  const std::uint32_t blue = random.below(200);
  for (std::size_t y = kMargin; y < area.height - kMargin; ++y) {
    for (std::size_t x = kMargin; x < area.width - kMargin; ++x) {
      const auto shade = static_cast<std::uint32_t>(55 * x / area.width);
      const auto depth = static_cast<std::uint32_t>(160 * y / area.height);
      const std::uint32_t grain = random.below(12);
      area.at(x, y) = (red + shade) << 16 | (depth + grain + 40) << 8 | (blue + grain);
    }
  }
}

}  // namespace

void paintPage(std::uint32_t* pixels, std::size_t width, std::size_t height) {
  std::fill_n(pixels, width * height, kPaper);
  Random random;
  for (std::size_t y = 0; y < height; y += kTile) {
    for (std::size_t x = 0; x < width; x += kTile) {
      const Area area{pixels + y * width + x, width, std::min(kTile, width - x),
                      std::min(kTile, height - y)};
      if (area.width < 4 * kMargin || area.height < 4 * kMargin) continue;
      random.below(3) == 0 ? paintPhoto(area, random) : paintText(area, random);
    }
  }
}

}  // namespace vlm::bench
