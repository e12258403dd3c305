#pragma once

#include <cstdint>
#include <optional>
#include <utility>

namespace vlm::tools {

// In pixels.
struct Size {
  std::int32_t width = 0;
  std::int32_t height = 0;
  bool operator==(const Size&) const = default;
};

struct Rectangle {
  std::int32_t x = 0;
  std::int32_t y = 0;
  Size size;
  bool operator==(const Rectangle&) const = default;
};

// The largest rectangle of the picture's shape in the middle of the box.
Rectangle fitted(Size picture, Size box);

// Where a person wants the window; the window manager decides what is not given.
struct Placement {
  std::optional<Size> size;
  std::optional<std::pair<std::int32_t, std::int32_t>> position;
};

}  // namespace vlm::tools
