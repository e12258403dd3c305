#include "platform/linux/view/picture_drawing.h"

#include <libyuv/convert_argb.h>
#include <libyuv/planar_functions.h>
#include <libyuv/scale.h>
#include <libyuv/scale_argb.h>

#include "platform/linux/media/ycbcr_encoding.h"
#include "platform/read_lock.h"

namespace vlm::platform::view {
namespace {

// Bilinear, and the mean of all pixels where a picture is made less than half as large.
constexpr auto kFilter = libyuv::kFilterBox;

int asInt(std::size_t value) {
  return static_cast<int>(value);
}

// What libyuv calls ARGB: blue first in memory.
struct Packed {
  const std::uint8_t* pixels;
  int bytesPerRow;
  int width;
  int height;
};

struct BiPlanar {
  const std::uint8_t* luma;
  int lumaBytesPerRow;
  const std::uint8_t* chroma;
  int chromaBytesPerRow;
  int width;
  int height;
  const libyuv::YuvConstants* matrix;
};

Packed packedPixels(const CVPixelBuffer& picture) {
  return {CVPixelBufferGetBaseAddress(picture), asInt(CVPixelBufferGetBytesPerRow(picture)),
          asInt(CVPixelBufferGetWidth(picture)), asInt(CVPixelBufferGetHeight(picture))};
}

BiPlanar biPlanarPixels(const CVPixelBuffer& picture) {
  return {CVPixelBufferGetBaseAddressOfPlane(picture, 0),
          asInt(CVPixelBufferGetBytesPerRowOfPlane(picture, 0)),
          CVPixelBufferGetBaseAddressOfPlane(picture, 1),
          asInt(CVPixelBufferGetBytesPerRowOfPlane(picture, 1)),
          asInt(CVPixelBufferGetWidth(picture)),
          asInt(CVPixelBufferGetHeight(picture)),
          &media::yuvConstants(media::encodingOf(picture))};
}

template <class Source>
bool hasSizeOf(const Source& source, const PixelTarget& target) {
  return source.width == target.width && source.height == target.height;
}

void convert(const BiPlanar& source, const PixelTarget& target) {
  libyuv::NV12ToARGBMatrix(source.luma, source.lumaBytesPerRow, source.chroma,
                           source.chromaBytesPerRow, target.pixels, target.bytesPerRow(),
                           source.matrix, target.width, target.height);
}

void scale(const Packed& source, const PixelTarget& target) {
  libyuv::ARGBScale(source.pixels, source.bytesPerRow, source.width, source.height, target.pixels,
                    target.bytesPerRow(), target.width, target.height, kFilter);
}

void drawPacked(const Packed& source, const PixelTarget& target) {
  if (!hasSizeOf(source, target)) return scale(source, target);
  libyuv::ARGBCopy(source.pixels, source.bytesPerRow, target.pixels, target.bytesPerRow(),
                   target.width, target.height);
}

BiPlanar scaled(const BiPlanar& source, int width, int height, std::vector<std::uint8_t>& memory) {
  const int chromaBytesPerRow = (width + 1) / 2 * 2;
  const std::size_t lumaBytes = static_cast<std::size_t>(width) * height;
  memory.resize(lumaBytes + static_cast<std::size_t>(chromaBytesPerRow) * ((height + 1) / 2));
  std::uint8_t* luma = memory.data();
  std::uint8_t* chroma = luma + lumaBytes;
  libyuv::NV12Scale(source.luma, source.lumaBytesPerRow, source.chroma, source.chromaBytesPerRow,
                    source.width, source.height, luma, width, chroma, chromaBytesPerRow, width,
                    height, kFilter);
  return {luma, width, chroma, chromaBytesPerRow, width, height, source.matrix};
}

Packed converted(const BiPlanar& source, std::vector<std::uint8_t>& memory) {
  memory.resize(static_cast<std::size_t>(source.width) * source.height * 4);
  const PixelTarget target{memory.data(), source.width, source.height};
  convert(source, target);
  return {memory.data(), target.bytesPerRow(), source.width, source.height};
}

void drawBiPlanar(const BiPlanar& source, const PixelTarget& target,
                  std::vector<std::uint8_t>& between) {
  if (hasSizeOf(source, target)) return convert(source, target);
  // Half the width and height is where the cheaper order changes: libyuv scales packed pixels at
  // less cost than planes, but then all pixels of the source are converted.
  const bool muchSmaller = target.width * 2 <= source.width && target.height * 2 <= source.height;
  if (muchSmaller) return convert(scaled(source, target.width, target.height, between), target);
  scale(converted(source, between), target);
}

}  // namespace

bool canDraw(const CVPixelBuffer& picture) noexcept {
  switch (CVPixelBufferGetPixelFormatType(picture)) {
    case kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange:
    case kCVPixelFormatType_420YpCbCr8BiPlanarFullRange:
    case kCVPixelFormatType_32BGRA:
      return true;
    default:
      return false;
  }
}

bool PictureDrawing::draw(CVPixelBuffer& picture, const PixelTarget& target) {
  const ReadLock lock(picture);
  if (!lock) return false;
  if (CVPixelBufferGetPixelFormatType(picture) == kCVPixelFormatType_32BGRA) {
    drawPacked(packedPixels(picture), target);
  } else {
    drawBiPlanar(biPlanarPixels(picture), target, between_);
  }
  return true;
}

}  // namespace vlm::platform::view
