#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

namespace vlm::bench {

// A moment of the shared clock drawn as a row of black and white cells, large enough to come
// through any encoder, and a check sum by which a torn or blurred code is recognised.
struct BarCode {
  static constexpr std::size_t kTimeBits = 40;
  static constexpr std::size_t kCells = kTimeBits + 8;
  static constexpr std::size_t kCellWidth = 32;
  static constexpr std::size_t kWidth = kCells * kCellWidth;
  static constexpr std::size_t kHeight = 64;
  // Its place on the screen.
  static constexpr std::size_t kX = 192;
  static constexpr std::size_t kY = 96;

  // Draws `nanoseconds`, to the microsecond, at the corner of a 32-bit image.
  static void draw(std::int64_t nanoseconds, std::uint32_t* corner, std::size_t pixelsPerRow);

  // Reads the code at its place from the luma plane of a picture of the screen. The moment that
  // was drawn lies within the 12 days before `now`.
  static std::optional<std::int64_t> read(std::span<const std::uint8_t> luma,
                                          std::size_t bytesPerRow, std::int64_t now);
};

}  // namespace vlm::bench
