#pragma once

#include <algorithm>

namespace vlm::platform::x11 {

struct Size {
  int width = 0;
  int height = 0;
  bool isEmpty() const { return width <= 0 || height <= 0; }
  friend bool operator==(const Size&, const Size&) = default;
};

// Pixels of whatever it is said to be relative to.
struct Rectangle {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;

  int right() const { return x + width; }
  int bottom() const { return y + height; }
  bool isEmpty() const { return width <= 0 || height <= 0; }
  Size size() const { return {width, height}; }
  Rectangle movedBy(int dx, int dy) const { return {x + dx, y + dy, width, height}; }
  friend bool operator==(const Rectangle&, const Rectangle&) = default;
};

inline Rectangle wholeOf(Size size) {
  return {0, 0, size.width, size.height};
}

// What both cover; empty when they don't touch.
inline Rectangle intersection(const Rectangle& a, const Rectangle& b) {
  const int x = std::max(a.x, b.x);
  const int y = std::max(a.y, b.y);
  return {x, y, std::max(std::min(a.right(), b.right()) - x, 0),
          std::max(std::min(a.bottom(), b.bottom()) - y, 0)};
}

}  // namespace vlm::platform::x11
