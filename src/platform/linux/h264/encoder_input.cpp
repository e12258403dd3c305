#include "platform/linux/h264/encoder_input.h"

#include <libyuv.h>

#include <cstring>
#include <utility>

namespace vlm::platform::h264 {
namespace {

constexpr std::size_t evenUp(std::size_t size) {
  return (size + 1) / 2 * 2;
}

YCbCrPicture inPlace(const CVPixelBuffer& buffer) {
  return {buffer.planes(), buffer.width(), buffer.height(), media::encodingOf(buffer)};
}

void convert(const CVPixelBuffer& bgra, const CVPixelBuffer& to) {
  const auto& from = bgra.plane(0);
  const auto [luma, chroma] = to.planes();
  libyuv::ARGBToNV12(from.pixels, from.rowBytes(), luma.pixels, luma.rowBytes(), chroma.pixels,
                     chroma.rowBytes(), static_cast<int>(bgra.width()),
                     static_cast<int>(bgra.height()));
}

void copyPlane(const PixelPlane& from, const PixelPlane& to, std::size_t bytesPerPixel) {
  for (std::size_t row = 0; row < from.height; ++row) {
    std::memcpy(to.row(row), from.row(row), from.width * bytesPerPixel);
  }
}

// Chroma planes cover the last odd column and row already; luma has to be made to.
void extendLuma(const PixelPlane& luma, std::size_t width, std::size_t height) {
  if (width < luma.width) {
    for (std::size_t row = 0; row < height; ++row) {
      auto* pixels = luma.row(row);
      pixels[width] = pixels[width - 1];
    }
  }
  if (height < luma.height) {
    auto* last = luma.row(height - 1);
    std::memcpy(last + luma.stride, last, luma.width);
  }
}

}  // namespace

bool EncoderInput::accepts(OSType format) noexcept {
  return format == kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange ||
         format == kCVPixelFormatType_420YpCbCr8BiPlanarFullRange ||
         format == kCVPixelFormatType_32BGRA;
}

Ref<CVPixelBuffer>& EncoderInput::nextCopy(std::size_t width, std::size_t height, OSType format) {
  current_ = 1 - current_;
  auto& copy = copies_[current_];
  if (!copy || copy->width() != width || copy->height() != height || copy->format() != format) {
    copy = CVPixelBuffer::make(width, height, format);
  }
  return copy;
}

std::optional<EncoderInput::Source> EncoderInput::read(const CVPixelBuffer& buffer) {
  const std::size_t width = evenUp(buffer.width());
  const std::size_t height = evenUp(buffer.height());
  const bool bgra = buffer.format() == kCVPixelFormatType_32BGRA;
  if (!bgra && width == buffer.width() && height == buffer.height()) {
    lastWasCopy_ = false;
    return Source{inPlace(buffer), std::nullopt};
  }
  const bool comparable = std::exchange(lastWasCopy_, true);
  const OSType format = bgra ? kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange : buffer.format();
  const auto& copy = nextCopy(width, height, format);
  if (!copy) return std::nullopt;
  if (bgra) {
    convert(buffer, *copy);
    copy->setMatrix(YCbCrMatrix::bt601);  // the copy may have held a picture of another matrix
  } else {
    copyPlane(buffer.plane(0), copy->plane(0), 1);
    copyPlane(buffer.plane(1), copy->plane(1), 2);
    copy->setMatrix(buffer.matrix());
  }
  extendLuma(copy->plane(0), buffer.width(), buffer.height());
  Source source{inPlace(*copy), std::nullopt};
  const auto& before = copies_[1 - current_];
  if (comparable && before && before->width() == width && before->height() == height &&
      before->format() == format) {
    source.previous = inPlace(*before);
  }
  return source;
}

}  // namespace vlm::platform::h264
