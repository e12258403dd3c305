#include "platform/linux/screen/block_pixels.h"

#include <cstring>

#include "platform/portable/change_map.h"

namespace vlm::platform::screen {
namespace {

constexpr std::size_t kRowBytes = ChangeMap::kBlockSize;

// Rows of a whole block are 16 bytes in both planes. With the length known the compiler makes a
// few instructions of what would be a call.
bool rowsAreSame(PlaneView a, PlaneView b, std::size_t bytes, int rows) {
  for (int row = 0; row < rows; ++row, a = a.from(0, 1), b = b.from(0, 1)) {
    const int difference = bytes == kRowBytes ? std::memcmp(a.pixels, b.pixels, kRowBytes)
                                              : std::memcmp(a.pixels, b.pixels, bytes);
    if (difference != 0) return false;
  }
  return true;
}

void copyRows(PlaneView from, Plane to, std::size_t bytes, int rows) {
  for (int row = 0; row < rows; ++row, from = from.from(0, 1), to = to.from(0, 1)) {
    if (bytes == kRowBytes) {
      std::memcpy(to.pixels, from.pixels, kRowBytes);
    } else {
      std::memcpy(to.pixels, from.pixels, bytes);
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

bool isSame(const PlanesView& a, const PlanesView& b, x11::Size size) {
  return rowsAreSame(a.luma, b.luma, static_cast<std::size_t>(size.width), size.height) &&
         rowsAreSame(a.chroma, b.chroma, chromaBytes(size), chromaRows(size));
}

void copyPixels(const PlanesView& from, const Planes& to, x11::Size size) {
  copyRows(from.luma, to.luma, static_cast<std::size_t>(size.width), size.height);
  copyRows(from.chroma, to.chroma, chromaBytes(size), chromaRows(size));
}

}  // namespace vlm::platform::screen
