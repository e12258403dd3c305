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
struct Packed : PlaneView {
  int width;
  int height;
};

struct BiPlanar : PlanesView {
  int width;
  int height;
  const libyuv::YuvConstants* matrix;
};

Packed packedPixels(const CVPixelBuffer& picture) {
  return {picture.plane(0), asInt(picture.width()), asInt(picture.height())};
}

BiPlanar biPlanarPixels(const CVPixelBuffer& picture) {
  return {picture.planes(), asInt(picture.width()), asInt(picture.height()),
          &media::yuvConstants(media::encodingOf(picture))};
}

template <class Source>
bool hasSizeOf(const Source& source, const PixelTarget& target) {
  return source.width == target.width && source.height == target.height;
}

void convert(const BiPlanar& source, const PixelTarget& target) {
  libyuv::NV12ToARGBMatrix(source.luma.pixels, source.luma.rowBytes(), source.chroma.pixels,
                           source.chroma.rowBytes(), target.pixels, target.rowBytes(),
                           source.matrix, target.width, target.height);
}

void scale(const Packed& source, const PixelTarget& target) {
  libyuv::ARGBScale(source.pixels, source.rowBytes(), source.width, source.height, target.pixels,
                    target.rowBytes(), target.width, target.height, kFilter);
}

void drawPacked(const Packed& source, const PixelTarget& target) {
  if (!hasSizeOf(source, target)) return scale(source, target);
  libyuv::ARGBCopy(source.pixels, source.rowBytes(), target.pixels, target.rowBytes(), target.width,
                   target.height);
}

BiPlanar scaled(const BiPlanar& source, int width, int height, std::vector<std::uint8_t>& memory) {
  const auto columns = static_cast<std::size_t>(width);
  const auto rows = static_cast<std::size_t>(height);
  const std::size_t chromaStride = (columns + 1) / 2 * 2;
  memory.resize(columns * rows + chromaStride * ((rows + 1) / 2));
  const Planes to{{memory.data(), columns}, {memory.data() + columns * rows, chromaStride}};
  libyuv::NV12Scale(source.luma.pixels, source.luma.rowBytes(), source.chroma.pixels,
                    source.chroma.rowBytes(), source.width, source.height, to.luma.pixels,
                    to.luma.rowBytes(), to.chroma.pixels, to.chroma.rowBytes(), width, height,
                    kFilter);
  return {to, width, height, source.matrix};
}

Packed converted(const BiPlanar& source, std::vector<std::uint8_t>& memory) {
  memory.resize(static_cast<std::size_t>(source.width) * source.height * 4);
  const auto target = PixelTarget::over(memory.data(), source.width, source.height);
  convert(source, target);
  return {target, source.width, source.height};
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
