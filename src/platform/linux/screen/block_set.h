#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/x11/rectangle.h"
#include "platform/portable/change_map.h"

namespace vlm::platform::screen {

// The side of a block in pixels.
inline constexpr int kBlock = static_cast<int>(ChangeMap::kBlockSize);

// How many blocks a side of a picture has; the last may be cut off.
constexpr int blocksFor(int pixels) {
  return (pixels + kBlock - 1) / kBlock;
}

// Blocks of a picture, the same 16 x 16 ones that a ChangeMap speaks of.
class BlockSet {
 public:
  explicit BlockSet(x11::Size picture);

  bool isEmpty() const { return isEmpty_; }
  // Adds every block that the pixels touch.
  void add(const x11::Rectangle& pixels);
  void addAll() { add(x11::wholeOf(picture_)); }
  // Empties the set and returns what was in it as a few rectangles of whole blocks, in pixels and
  // cut off at the picture's edge. Blocks that cost less than another rectangle may be among them,
  // and rectangles may overlap a little.
  std::vector<x11::Rectangle> takeRectangles();

 private:
  std::vector<x11::Rectangle> runsIn(int row) const;
  x11::Rectangle pixelsOf(const x11::Rectangle& blocks) const;

  x11::Size picture_;
  int columns_;
  int rows_;
  bool isEmpty_ = true;
  std::vector<std::uint8_t> marks_;
};

}  // namespace vlm::platform::screen
