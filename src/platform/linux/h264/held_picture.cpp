#include "platform/linux/h264/held_picture.h"

#include <algorithm>
#include <cstring>

#include "platform/linux/h264/block.h"

namespace vlm::platform::h264 {
namespace {

// One row of pixels, in runs of blocks that are alike. A row of chroma has as many bytes as one of
// luma.
void composeRow(const std::uint8_t* source, const std::uint8_t* shown, std::uint8_t* to,
                std::size_t width, std::span<const std::uint8_t> constant) {
  for (std::size_t block = 0; block < constant.size();) {
    std::size_t end = block + 1;
    while (end < constant.size() && constant[end] == constant[block]) ++end;
    const std::size_t first = block * kBlock;
    const auto* from = constant[block] != 0 ? shown : source;
    std::memcpy(to + first, from + first, std::min(end * kBlock, width) - first);
    block = end;
  }
}

void composePlane(PlaneView source, PlaneView shown, const PixelPlane& to, std::size_t width,
                  std::size_t rowsPerBlock, std::span<const std::uint8_t> constant) {
  const std::size_t columns = (width + kBlock - 1) / kBlock;
  for (std::size_t row = 0; row < to.height; ++row) {
    composeRow(source.row(row), shown.row(row), to.row(row), width,
               constant.subspan(row / rowsPerBlock * columns, columns));
  }
}

}  // namespace

const YCbCrPicture* HeldPicture::compose(const YCbCrPicture& source, const YCbCrPicture& shown,
                                         std::span<const std::uint8_t> constant) {
  if (!memory_ || memory_->width() != source.width || memory_->height() != source.height) {
    memory_ = CVPixelBuffer::make(source.width, source.height,
                                  kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange);
    if (!memory_) return nullptr;
  }
  composePlane(source.luma, shown.luma, memory_->plane(0), source.width, kBlock, constant);
  composePlane(source.chroma, shown.chroma, memory_->plane(1), source.width, kBlock / 2, constant);
  picture_ = {memory_->planes(), source.width, source.height, source.encoding};
  return &picture_;
}

}  // namespace vlm::platform::h264
