#include "geometry.h"

#include <algorithm>

namespace vlm::tools {

Rectangle fitted(Size picture, Size box) {
  if (picture.width < 1 || picture.height < 1) return {0, 0, box};
  const double scale = std::min(static_cast<double>(box.width) / picture.width,
                                static_cast<double>(box.height) / picture.height);
  const Size size{std::max(1, static_cast<std::int32_t>(picture.width * scale + 0.5)),
                  std::max(1, static_cast<std::int32_t>(picture.height * scale + 0.5))};
  return {(box.width - size.width) / 2, (box.height - size.height) / 2, size};
}

}  // namespace vlm::tools
