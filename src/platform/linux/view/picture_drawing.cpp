#include "platform/linux/view/picture_drawing.h"

#include <libyuv/convert_argb.h>
#include <libyuv/planar_functions.h>
#include <libyuv/scale.h>
#include <libyuv/scale_argb.h>

namespace vlm::platform {
namespace {

// Bilinear, and a mean of all pixels where a picture is made less than half as large.
constexpr auto kFilter = libyuv::kFilterBox;

struct BiPlanar {
  const std::uint8_t* luma;
  int lumaStride;
  const std::uint8_t* chroma;
  int chromaStride;
};

int size(std::size_t value) {
  return static_cast<int>(value);
}

BiPlanar planes(const CVPixelBuffer& picture) {
  return {CVPixelBufferGetBaseAddressOfPlane(picture, 0),
          size(CVPixelBufferGetBytesPerRowOfPlane(picture, 0)),
          CVPixelBufferGetBaseAddressOfPlane(picture, 1),
          size(CVPixelBufferGetBytesPerRowOfPlane(picture, 1))};
}

void convert(const BiPlanar& source, const libyuv::YuvConstants& matrix,
             const PixelTarget& target) {
  libyuv::NV12ToARGBMatrix(source.luma, source.lumaStride, source.chroma, source.chromaStride,
                           target.pixels, target.bytesPerRow(), &matrix, target.width,
                           target.height);
}

void drawPacked(const CVPixelBuffer& picture, int width, int height, const PixelTarget& target) {
  const auto* source = CVPixelBufferGetBaseAddress(picture);
  const int stride = size(CVPixelBufferGetBytesPerRow(picture));
  if (width == target.width && height == target.height) {
    libyuv::ARGBCopy(source, stride, target.pixels, target.bytesPerRow(), width, height);
  } else {
    libyuv::ARGBScale(source, stride, width, height, target.pixels, target.bytesPerRow(),
                      target.width, target.height, kFilter);
  }
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
  if (CVPixelBufferLockBaseAddress(picture, kCVPixelBufferLock_ReadOnly) != kCVReturnSuccess) {
    return false;
  }
  if (CVPixelBufferGetPlaneCount(picture) == 2) {
    drawPlanar(picture, target);
  } else {
    drawPacked(picture, size(CVPixelBufferGetWidth(picture)), size(CVPixelBufferGetHeight(picture)),
               target);
  }
  CVPixelBufferUnlockBaseAddress(picture, kCVPixelBufferLock_ReadOnly);
  return true;
}

void PictureDrawing::drawPlanar(const CVPixelBuffer& picture, const PixelTarget& target) {
  const bool videoRange =
      CVPixelBufferGetPixelFormatType(picture) == kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange;
  const auto& matrix = videoRange ? libyuv::kYuvI601Constants : libyuv::kYuvJPEGConstants;
  const int width = size(CVPixelBufferGetWidth(picture));
  const int height = size(CVPixelBufferGetHeight(picture));
  const BiPlanar source = planes(picture);
  if (width == target.width && height == target.height) {
    convert(source, matrix, target);
    return;
  }
  // Scaled before it is converted: a pixel has 1.5 bytes then instead of 4.
  const int chromaStride = (target.width + 1) / 2 * 2;
  const std::size_t lumaBytes = static_cast<std::size_t>(target.width) * target.height;
  scaled_.resize(lumaBytes + static_cast<std::size_t>(chromaStride) * ((target.height + 1) / 2));
  std::uint8_t* luma = scaled_.data();
  std::uint8_t* chroma = luma + lumaBytes;
  libyuv::NV12Scale(source.luma, source.lumaStride, source.chroma, source.chromaStride, width,
                    height, luma, target.width, chroma, chromaStride, target.width, target.height,
                    kFilter);
  convert({luma, target.width, chroma, chromaStride}, matrix, target);
}

}  // namespace vlm::platform
