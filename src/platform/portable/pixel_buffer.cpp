#include "platform/portable/pixel_buffer.h"

#include <cstdlib>
#include <limits>
#include <new>

#include "platform/portable/fallible.h"

namespace vlm::platform {
namespace {

// Rows start on their own cache line, which the vector loops of every consumer like best.
constexpr std::size_t kRowAlignment = 64;
// Far above any screen, and low enough that no product below can overflow.
constexpr std::size_t kLargestSide = 1 << 16;

constexpr std::size_t alignedRow(std::size_t bytes) {
  return (bytes + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
}

PixelPlane layOut(std::size_t width, std::size_t height, std::size_t bytesPerPixel) {
  return {{nullptr, alignedRow(width * bytesPerPixel)}, width, height};
}

bool isBiPlanar(OSType format) {
  return format == kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange ||
         format == kCVPixelFormatType_420YpCbCr8BiPlanarFullRange;
}

}  // namespace

void CVPixelBuffer::FreeMemory::operator()(std::uint8_t* memory) const noexcept {
  std::free(memory);
}

CVPixelBuffer::CVPixelBuffer(std::size_t width, std::size_t height, OSType format,
                             std::array<PixelPlane, 2> planes)
    : format_(format),
      width_(width),
      height_(height),
      planeCount_(planes[1].pixels != nullptr ? 2 : 0),
      planes_(planes) {}

Ref<CVPixelBuffer> CVPixelBuffer::make(std::size_t width, std::size_t height, OSType format) {
  if (width < 1 || height < 1 || width > kLargestSide || height > kLargestSide) return nullptr;
  std::array<PixelPlane, 2> planes;
  if (isBiPlanar(format)) {
    planes = {layOut(width, height, 1), layOut((width + 1) / 2, (height + 1) / 2, 2)};
  } else if (format == kCVPixelFormatType_32BGRA) {
    planes = {layOut(width, height, 4), {}};
  } else {
    return nullptr;
  }
  const std::size_t first = planes[0].stride * planes[0].height;
  const std::size_t second = planes[1].stride * planes[1].height;
  // Vector loops may read to the end of the row's last full vector; the spare line allows it.
  std::unique_ptr<std::uint8_t[], FreeMemory> memory(static_cast<std::uint8_t*>(
      std::aligned_alloc(kRowAlignment, first + second + kRowAlignment)));
  if (memory == nullptr) return nullptr;
  planes[0].pixels = memory.get();
  if (second > 0) planes[1].pixels = memory.get() + first;
  auto buffer = makeRef<CVPixelBuffer>(width, height, format, planes);
  buffer->memory_ = std::move(memory);
  return buffer;
}

CVReturn portable::createPixelBuffer(std::size_t width, std::size_t height, OSType format,
                                     Ref<CVPixelBuffer>& out) {
  constexpr CVReturn kCVReturnAllocationFailed = -6662;
  auto buffer = CVPixelBuffer::make(width, height, format);
  if (!buffer) return kCVReturnAllocationFailed;
  out = std::move(buffer);
  return kCVReturnSuccess;
}

OSType CVPixelBufferGetPixelFormatType(const CVPixelBuffer& buffer) noexcept {
  return buffer.format();
}

std::size_t CVPixelBufferGetWidth(const CVPixelBuffer& buffer) noexcept {
  return buffer.width();
}

std::size_t CVPixelBufferGetHeight(const CVPixelBuffer& buffer) noexcept {
  return buffer.height();
}

std::size_t CVPixelBufferGetPlaneCount(const CVPixelBuffer& buffer) noexcept {
  return buffer.planeCount();
}

CVReturn CVPixelBufferLockBaseAddress(CVPixelBuffer& buffer, CVPixelBufferLockFlags flags) {
  return buffer.lock(flags);
}

CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBuffer& buffer, CVPixelBufferLockFlags flags) {
  return buffer.unlock(flags);
}

std::uint8_t* CVPixelBufferGetBaseAddressOfPlane(const CVPixelBuffer& buffer,
                                                 std::size_t plane) noexcept {
  return plane < buffer.planeCount() ? buffer.plane(plane).pixels : nullptr;
}

std::size_t CVPixelBufferGetBytesPerRowOfPlane(const CVPixelBuffer& buffer,
                                               std::size_t plane) noexcept {
  return plane < buffer.planeCount() ? buffer.plane(plane).stride : 0;
}

std::uint8_t* CVPixelBufferGetBaseAddress(const CVPixelBuffer& buffer) noexcept {
  return buffer.plane(0).pixels;
}

std::size_t CVPixelBufferGetBytesPerRow(const CVPixelBuffer& buffer) noexcept {
  return buffer.plane(0).stride;
}

}  // namespace vlm::platform
