#pragma once

#include <cstddef>
#include <cstdint>
#include <string_view>

#include "platform/cf_value.h"
#include "platform/ref.h"

namespace vlm::platform {

using OSType = std::uint32_t;
using CVReturn = std::int32_t;
inline constexpr CVReturn kCVReturnSuccess = 0;

// Bi-planar 4:2:0, luma 16..235 (video range) or 0..255 (full range), interleaved Cb and Cr; and
// packed 8-bit blue, green, red, alpha.
inline constexpr OSType kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange = 0x34323076;  // '420v'
inline constexpr OSType kCVPixelFormatType_420YpCbCr8BiPlanarFullRange = 0x34323066;   // '420f'
inline constexpr OSType kCVPixelFormatType_32BGRA = 0x42475241;                        // 'BGRA'

// Attributes that a pixel buffer can be asked to have.
inline constexpr std::string_view kCVPixelBufferPixelFormatTypeKey = "PixelFormatType";
inline constexpr std::string_view kCVPixelBufferIOSurfacePropertiesKey = "IOSurfaceProperties";
inline constexpr std::string_view kCVPixelBufferMetalCompatibilityKey = "MetalCompatibility";

using CVPixelBufferLockFlags = std::uint64_t;
inline constexpr CVPixelBufferLockFlags kCVPixelBufferLock_ReadOnly = 1;

// An image in memory, chunky (one plane, reported as plane count 0) or bi-planar (two planes).
// Counted; the pixels live while a reference does. Odd sizes are allowed: the chroma plane then
// covers the last column and row too.
class CVPixelBuffer;

// A new buffer with undefined contents. Refuses sizes below 1 and formats that it can't lay out.
// `out` is written only on success.
CVReturn CVPixelBufferCreate(std::size_t width, std::size_t height, OSType format,
                             const CFValue& attributes, Ref<CVPixelBuffer>& out);

// Any thread, without a lock.
OSType CVPixelBufferGetPixelFormatType(const CVPixelBuffer& buffer) noexcept;
std::size_t CVPixelBufferGetWidth(const CVPixelBuffer& buffer) noexcept;
std::size_t CVPixelBufferGetHeight(const CVPixelBuffer& buffer) noexcept;
std::size_t CVPixelBufferGetPlaneCount(const CVPixelBuffer& buffer) noexcept;

// The pixels may be touched only between a lock and the matching unlock, and only read when the
// lock was read-only. Locks nest. Non-zero when the platform refuses.
CVReturn CVPixelBufferLockBaseAddress(CVPixelBuffer& buffer, CVPixelBufferLockFlags flags);
CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBuffer& buffer, CVPixelBufferLockFlags flags);

// Null or 0 for a plane that the buffer does not have. Rows may be longer than their pixels.
std::uint8_t* CVPixelBufferGetBaseAddressOfPlane(const CVPixelBuffer& buffer,
                                                 std::size_t plane) noexcept;
std::size_t CVPixelBufferGetBytesPerRowOfPlane(const CVPixelBuffer& buffer,
                                               std::size_t plane) noexcept;
std::uint8_t* CVPixelBufferGetBaseAddress(const CVPixelBuffer& buffer) noexcept;
std::size_t CVPixelBufferGetBytesPerRow(const CVPixelBuffer& buffer) noexcept;

}  // namespace vlm::platform
