#include "capture/output_size.h"

#include <algorithm>

#include "platform/integer.h"

namespace vlm::capture {
namespace {

// Content larger than any screen, or of no size that is a number, still gives a size.
std::int64_t pixels(double length) {
  constexpr std::int64_t kLargest = 1 << 30;
  return std::clamp<std::int64_t>(platform::truncated<std::int64_t>(length), 0, kLargest);
}

std::size_t even(std::int64_t length) {
  return static_cast<std::size_t>(std::max<std::int64_t>(length / 2 * 2, 2));
}

}  // namespace

OutputSize outputSize(platform::CGSize content, double scale, std::int32_t maxWidth,
                      std::int32_t maxHeight) {
  std::int64_t width = pixels(content.width * scale);
  std::int64_t height = pixels(content.height * scale);
  if (maxWidth > 0 && maxHeight > 0 && (width > maxWidth || height > maxHeight)) {
    const auto ratio = [](std::int32_t limit, std::int64_t length) {
      return static_cast<double>(limit) / static_cast<double>(std::max<std::int64_t>(length, 1));
    };
    const double shrink = std::min(ratio(maxWidth, width), ratio(maxHeight, height));
    width = pixels(static_cast<double>(width) * shrink);
    height = pixels(static_cast<double>(height) * shrink);
  }
  return {even(width), even(height)};
}

}  // namespace vlm::capture
