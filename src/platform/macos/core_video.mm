#include "platform/core_video.h"

#import <CoreVideo/CoreVideo.h>

#include "platform/macos/bridge/native.h"
#include "platform/macos/bridge/pixel_buffer_keys.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

static_assert(kCVReturnSuccess == ::kCVReturnSuccess);
static_assert(kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange ==
              ::kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange);
static_assert(kCVPixelFormatType_420YpCbCr8BiPlanarFullRange ==
              ::kCVPixelFormatType_420YpCbCr8BiPlanarFullRange);
static_assert(kCVPixelFormatType_32BGRA == ::kCVPixelFormatType_32BGRA);
static_assert(kCVPixelBufferLock_ReadOnly == ::kCVPixelBufferLock_ReadOnly);

CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, OSType format,
                             const CFValue& attributes, Ref<CVPixelBuffer>& out) {
  const auto dictionary = bridge::toDictionary(attributes, bridge::pixelBufferKeys());
  CVPixelBufferRef buffer = nullptr;
  const auto status = ::CVPixelBufferCreate(::kCFAllocatorDefault, width, height, format,
                                            dictionary.get(), &buffer);
  if (status == ::kCVReturnSuccess) out = bridge::adopted<CVPixelBuffer>(buffer);
  return status;
}

OSType CVPixelBufferGetPixelFormatType(const CVPixelBuffer& buffer) noexcept {
  return ::CVPixelBufferGetPixelFormatType(bridge::native(buffer));
}

std::size_t CVPixelBufferGetWidth(const CVPixelBuffer& buffer) noexcept {
  return ::CVPixelBufferGetWidth(bridge::native(buffer));
}

std::size_t CVPixelBufferGetHeight(const CVPixelBuffer& buffer) noexcept {
  return ::CVPixelBufferGetHeight(bridge::native(buffer));
}

std::size_t CVPixelBufferGetPlaneCount(const CVPixelBuffer& buffer) noexcept {
  return ::CVPixelBufferGetPlaneCount(bridge::native(buffer));
}

CVReturn CVPixelBufferLockBaseAddress(CVPixelBuffer& buffer, CVPixelBufferLockFlags flags) {
  return ::CVPixelBufferLockBaseAddress(bridge::native(buffer),
                                        static_cast<::CVPixelBufferLockFlags>(flags));
}

CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBuffer& buffer, CVPixelBufferLockFlags flags) {
  return ::CVPixelBufferUnlockBaseAddress(bridge::native(buffer),
                                          static_cast<::CVPixelBufferLockFlags>(flags));
}

// What the framework answers for a plane that is not there is not published for every layout.
std::uint8_t* CVPixelBufferGetBaseAddressOfPlane(const CVPixelBuffer& buffer,
                                                 std::size_t plane) noexcept {
  if (plane >= CVPixelBufferGetPlaneCount(buffer)) return nullptr;
  return static_cast<std::uint8_t*>(
      ::CVPixelBufferGetBaseAddressOfPlane(bridge::native(buffer), plane));
}

std::size_t CVPixelBufferGetBytesPerRowOfPlane(const CVPixelBuffer& buffer,
                                               std::size_t plane) noexcept {
  if (plane >= CVPixelBufferGetPlaneCount(buffer)) return 0;
  return ::CVPixelBufferGetBytesPerRowOfPlane(bridge::native(buffer), plane);
}

std::uint8_t* CVPixelBufferGetBaseAddress(const CVPixelBuffer& buffer) noexcept {
  return static_cast<std::uint8_t*>(::CVPixelBufferGetBaseAddress(bridge::native(buffer)));
}

std::size_t CVPixelBufferGetBytesPerRow(const CVPixelBuffer& buffer) noexcept {
  return ::CVPixelBufferGetBytesPerRow(bridge::native(buffer));
}

}  // namespace vlm::platform
