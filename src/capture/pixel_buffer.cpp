#include "capture/pixel_buffer.h"

#include <array>
#include <cstring>

#include "platform/accelerate.h"
#include "platform/read_lock.h"

namespace vlm::capture {
namespace {

using platform::CVPixelBuffer;
using platform::OSType;
using platform::vImage_Buffer;

constexpr std::size_t kBytesPerPixel = 4;

// Luma and chroma reach 255 in both ranges: a stated property of the exported picture.
platform::vImage_YpCbCrPixelRange pixelRange(OSType format) {
  const bool video = format == platform::kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange;
  const std::int32_t black = video ? 16 : 0;
  return {.Yp_bias = black,
          .CbCr_bias = 128,
          .YpRangeMax = 255,
          .CbCrRangeMax = 255,
          .YpMax = 255,
          .YpMin = black,
          .CbCrMax = 255,
          .CbCrMin = 1};
}

bool convertBiPlanar(const CVPixelBuffer& buffer, OSType format, const vImage_Buffer& destination) {
  const vImage_Buffer luma{platform::CVPixelBufferGetBaseAddressOfPlane(buffer, 0),
                           destination.height, destination.width,
                           platform::CVPixelBufferGetBytesPerRowOfPlane(buffer, 0)};
  const vImage_Buffer chroma{platform::CVPixelBufferGetBaseAddressOfPlane(buffer, 1),
                             destination.height / 2, destination.width / 2,
                             platform::CVPixelBufferGetBytesPerRowOfPlane(buffer, 1)};
  if (luma.data == nullptr || chroma.data == nullptr) return false;
  platform::vImage_YpCbCrToARGB conversion;
  if (platform::vImageConvert_YpCbCrToARGB_GenerateConversion(
          platform::kvImage_YpCbCrToARGBMatrix_ITU_R_601_4, pixelRange(format), conversion) !=
      platform::kvImageNoError) {
    return false;
  }
  constexpr std::array<std::uint8_t, 4> kBgraFromArgb{3, 2, 1, 0};
  constexpr std::uint8_t kOpaque = 255;
  return platform::vImageConvert_420Yp8_CbCr8ToARGB8888(luma, chroma, destination, conversion,
                                                        kBgraFromArgb,
                                                        kOpaque) == platform::kvImageNoError;
}

bool copyPacked(const CVPixelBuffer& buffer, const vImage_Buffer& destination) {
  const std::uint8_t* source = platform::CVPixelBufferGetBaseAddress(buffer);
  if (source == nullptr) return false;
  const std::size_t sourceStride = platform::CVPixelBufferGetBytesPerRow(buffer);
  for (std::size_t row = 0; row < destination.height; ++row) {
    std::memcpy(destination.data + row * destination.rowBytes, source + row * sourceStride,
                destination.rowBytes);
  }
  return true;
}

}  // namespace

bool lockPlanes(CVPixelBuffer& buffer, LockedPlanes& planes) {
  if (platform::CVPixelBufferGetPlaneCount(buffer) < 2) return false;
  if (platform::CVPixelBufferLockBaseAddress(buffer, platform::kCVPixelBufferLock_ReadOnly) !=
      platform::kCVReturnSuccess) {
    return false;
  }
  planes.lumaBase = platform::CVPixelBufferGetBaseAddressOfPlane(buffer, 0);
  planes.lumaStride =
      static_cast<std::int32_t>(platform::CVPixelBufferGetBytesPerRowOfPlane(buffer, 0));
  planes.chromaBase = platform::CVPixelBufferGetBaseAddressOfPlane(buffer, 1);
  planes.chromaStride =
      static_cast<std::int32_t>(platform::CVPixelBufferGetBytesPerRowOfPlane(buffer, 1));
  return true;
}

bool exportBgra(CVPixelBuffer& buffer, std::uint8_t* destination, std::int32_t capacity) {
  const OSType format = platform::CVPixelBufferGetPixelFormatType(buffer);
  const std::size_t width = platform::CVPixelBufferGetWidth(buffer);
  const std::size_t height = platform::CVPixelBufferGetHeight(buffer);
  const std::size_t rowBytes = width * kBytesPerPixel;
  if (capacity < 0 || rowBytes * height > static_cast<std::size_t>(capacity)) return false;
  const platform::ReadLock lock(buffer);
  if (!lock) return false;
  const vImage_Buffer packed{destination, height, width, rowBytes};
  switch (format) {
    case platform::kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange:
    case platform::kCVPixelFormatType_420YpCbCr8BiPlanarFullRange:
      return convertBiPlanar(buffer, format, packed);
    case platform::kCVPixelFormatType_32BGRA:
      return copyPacked(buffer, packed);
    default:
      return false;
  }
}

}  // namespace vlm::capture
