#include "geometry.h"

#include <algorithm>
#include <cmath>

namespace vlm::tools {
namespace {

std::int32_t rounded(double value) {
  return static_cast<std::int32_t>(std::lround(value));
}

}  // namespace

Rectangle fitted(Size picture, Size box) {
  if (picture.width < 1 || picture.height < 1) return {0, 0, box};
  const double scale = std::min(static_cast<double>(box.width) / picture.width,
                                static_cast<double>(box.height) / picture.height);
  const Size size{std::max(1, rounded(picture.width * scale)),
                  std::max(1, rounded(picture.height * scale))};
  return {(box.width - size.width) / 2, (box.height - size.height) / 2, size};
}

}  // namespace vlm::tools
