#include "platform/linux/screen/block_pixels.h"

#include <cstring>

#include "platform/portable/change_map.h"

namespace vlm::platform::screen {
namespace {

constexpr std::size_t kRowBytes = ChangeMap::kBlockSize;

// Rows of a whole block are 16 bytes in both planes. With the length known the compiler makes a
// few instructions of what would be a call.
bool rowsAreSame(const std::uint8_t* a, std::size_t aStride, const std::uint8_t* b,
                 std::size_t bStride, std::size_t bytes, int rows) {
  for (int row = 0; row < rows; ++row, a += aStride, b += bStride) {
    const int difference =
        bytes == kRowBytes ? std::memcmp(a, b, kRowBytes) : std::memcmp(a, b, bytes);
    if (difference != 0) return false;
  }
  return true;
}

void copyRows(const std::uint8_t* from, std::size_t fromStride, std::uint8_t* to,
              std::size_t toStride, std::size_t bytes, int rows) {
  for (int row = 0; row < rows; ++row, from += fromStride, to += toStride) {
    if (bytes == kRowBytes) {
      std::memcpy(to, from, kRowBytes);
    } else {
      std::memcpy(to, from, bytes);
    }
  }
}

// Chroma covers the last column and row of an odd size too.
std::size_t chromaBytes(x11::Size size) {
  return static_cast<std::size_t>(size.width + 1) / 2 * 2;
}
int chromaRows(x11::Size size) {
  return (size.height + 1) / 2;
}

}  // namespace

PlanarView PlanarView::at(int x, int y) const {
  const auto column = static_cast<std::size_t>(x);
  const auto row = static_cast<std::size_t>(y);
  return {luma + row * lumaBytesPerRow + column, lumaBytesPerRow,
          chroma + row / 2 * chromaBytesPerRow + column, chromaBytesPerRow};
}

bool isSame(const PlanarView& a, const PlanarView& b, x11::Size size) {
  return rowsAreSame(a.luma, a.lumaBytesPerRow, b.luma, b.lumaBytesPerRow,
                     static_cast<std::size_t>(size.width), size.height) &&
         rowsAreSame(a.chroma, a.chromaBytesPerRow, b.chroma, b.chromaBytesPerRow,
                     chromaBytes(size), chromaRows(size));
}

void copyPixels(const PlanarView& from, const PlanarView& to, x11::Size size) {
  copyRows(from.luma, from.lumaBytesPerRow, to.luma, to.lumaBytesPerRow,
           static_cast<std::size_t>(size.width), size.height);
  copyRows(from.chroma, from.chromaBytesPerRow, to.chroma, to.chromaBytesPerRow, chromaBytes(size),
           chromaRows(size));
}

}  // namespace vlm::platform::screen
