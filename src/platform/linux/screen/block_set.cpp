#include "platform/linux/screen/block_set.h"

#include <algorithm>
#include <utility>

namespace vlm::platform::screen {
namespace {

using x11::Rectangle;

// A request to the server costs about as much as this many blocks do.
constexpr int kWorthARequest = 24;

// What a rectangle around both would hold beyond them.
int waste(const Rectangle& a, const Rectangle& b) {
  const int width = std::max(a.right(), b.right()) - std::min(a.x, b.x);
  const int height = std::max(a.bottom(), b.bottom()) - std::min(a.y, b.y);
  return width * height - a.width * a.height - b.width * b.height;
}

Rectangle around(const Rectangle& a, const Rectangle& b) {
  const int x = std::min(a.x, b.x);
  const int y = std::min(a.y, b.y);
  return {x, y, std::max(a.right(), b.right()) - x, std::max(a.bottom(), b.bottom()) - y};
}

}  // namespace

BlockSet::BlockSet(x11::Size picture)
    : picture_(picture),
      columns_(blocksFor(picture.width)),
      rows_(blocksFor(picture.height)),
      marks_(static_cast<std::size_t>(columns_) * rows_) {}

void BlockSet::add(const Rectangle& pixels) {
  const Rectangle inside = intersection(pixels, x11::wholeOf(picture_));
  if (inside.isEmpty()) return;
  const int left = inside.x / kBlock;
  const int width = blocksFor(inside.right()) - left;
  for (int row = inside.y / kBlock; row < blocksFor(inside.bottom()); ++row) {
    std::fill_n(marks_.begin() + row * columns_ + left, width, std::uint8_t{1});
  }
  isEmpty_ = false;
}

Rectangle BlockSet::pixelsOf(const Rectangle& blocks) const {
  const Rectangle pixels{blocks.x * kBlock, blocks.y * kBlock, blocks.width * kBlock,
                         blocks.height * kBlock};
  return intersection(pixels, x11::wholeOf(picture_));
}

// The blocks of one row, one block high; small gaps are closed.
std::vector<Rectangle> BlockSet::runsIn(int row) const {
  std::vector<Rectangle> runs;
  const auto begin = marks_.begin() + row * columns_;
  const auto end = begin + columns_;
  for (auto from = std::find(begin, end, 1); from != end;) {
    const auto to = std::find(from, end, 0);
    const Rectangle run{static_cast<int>(from - begin), row, static_cast<int>(to - from), 1};
    if (!runs.empty() && waste(runs.back(), run) <= kWorthARequest) {
      runs.back() = around(runs.back(), run);
    } else {
      runs.push_back(run);
    }
    from = std::find(to, end, 1);
  }
  return runs;
}

std::vector<Rectangle> BlockSet::takeRectangles() {
  std::vector<Rectangle> result;
  std::vector<Rectangle> open;  // those that reach down to the row above
  for (int row = 0; row < rows_; ++row) {
    const auto runs = runsIn(row);
    std::vector<Rectangle> next;
    for (const auto& run : runs) {
      // A run goes on with the rectangle above it where that adds little that is not wanted.
      const auto above = std::ranges::find_if(open, [&](const Rectangle& each) {
        const bool isSame = each.x == run.x && each.width == run.width;
        const bool isAlone = runs.size() == 1 && open.size() == 1;
        return isSame || (isAlone && waste(each, run) <= kWorthARequest);
      });
      if (above == open.end()) {
        next.push_back(run);
      } else {
        next.push_back(around(*above, run));
        open.erase(above);
      }
    }
    result.insert(result.end(), open.begin(), open.end());
    open = std::move(next);
  }
  result.insert(result.end(), open.begin(), open.end());
  for (auto& each : result) each = pixelsOf(each);
  std::ranges::fill(marks_, std::uint8_t{0});
  isEmpty_ = true;
  return result;
}

}  // namespace vlm::platform::screen
