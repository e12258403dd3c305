#pragma once

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace vlm::platform {

// Rows of pixels in memory that another owner keeps: a chunky picture, one plane of a planar one,
// or a part of either.
template <typename Byte>
struct BasicPlane {
  Byte* pixels = nullptr;
  std::size_t stride = 0;  // bytes from one row to the next

  Byte* row(std::size_t y) const noexcept { return pixels + y * stride; }
  BasicPlane from(std::size_t byte, std::size_t y) const noexcept {
    return {row(y) + byte, stride};
  }
  // The stride as libraries that work on pictures take it.
  int rowBytes() const noexcept { return static_cast<int>(stride); }

  // NOLINTNEXTLINE(google-explicit-constructor): what may be written may be read
  operator BasicPlane<const Byte>() const noexcept requires(!std::is_const_v<Byte>) {
    return {pixels, stride};
  }
};
using Plane = BasicPlane<std::uint8_t>;
using PlaneView = BasicPlane<const std::uint8_t>;

// The planes of a 4:2:0 picture with interleaved chroma, or of a part of one.
template <typename Byte>
struct BasicPlanes {
  BasicPlane<Byte> luma;
  BasicPlane<Byte> chroma;

  // The part from a pixel on; both coordinates even.
  BasicPlanes from(std::size_t x, std::size_t y) const noexcept {
    return {luma.from(x, y), chroma.from(x, y / 2)};
  }

  // NOLINTNEXTLINE(google-explicit-constructor)
  operator BasicPlanes<const Byte>() const noexcept requires(!std::is_const_v<Byte>) {
    return {luma, chroma};
  }
};
using Planes = BasicPlanes<std::uint8_t>;
using PlanesView = BasicPlanes<const std::uint8_t>;

}  // namespace vlm::platform
