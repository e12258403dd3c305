#include "bench/support/bar_code.h"

#include <algorithm>

namespace vlm::bench {
namespace {

constexpr std::uint32_t kBlack = 0;
constexpr std::uint32_t kWhite = 0xFFFFFF;
constexpr std::uint64_t kTimeMask = (std::uint64_t{1} << BarCode::kTimeBits) - 1;
// Only the middle of a cell is looked at: its edges ring.
constexpr std::size_t kProbe = 8;

std::uint64_t checkSum(std::uint64_t time) {
  std::uint64_t sum = 0x5A;
  for (std::size_t shift = 0; shift < BarCode::kTimeBits; shift += 8) {
    sum = (sum * 31 + (time >> shift & 0xFF)) & 0xFF;
  }
  return sum;
}

unsigned brightness(std::span<const std::uint8_t> luma, std::size_t bytesPerRow, std::size_t cell) {
  const std::size_t x =
      BarCode::kX + cell * BarCode::kCellWidth + (BarCode::kCellWidth - kProbe) / 2;
  const std::size_t y = BarCode::kY + (BarCode::kHeight - kProbe) / 2;
  unsigned sum = 0;
  for (std::size_t row = 0; row < kProbe; ++row) {
    for (const auto value : luma.subspan((y + row) * bytesPerRow + x, kProbe)) sum += value;
  }
  return sum / (kProbe * kProbe);
}

}  // namespace

void BarCode::draw(std::int64_t nanoseconds, std::uint32_t* corner, std::size_t pixelsPerRow) {
  const auto time = static_cast<std::uint64_t>(nanoseconds / 1000) & kTimeMask;
  const std::uint64_t code = time << 8 | checkSum(time);
  for (std::size_t cell = 0; cell < kCells; ++cell) {
    std::fill_n(corner + cell * kCellWidth, kCellWidth, code >> cell & 1 ? kWhite : kBlack);
  }
  for (std::size_t row = 1; row < kHeight; ++row) {
    std::copy_n(corner, kWidth, corner + row * pixelsPerRow);
  }
}

std::optional<std::int64_t> BarCode::read(std::span<const std::uint8_t> luma,
                                          std::size_t bytesPerRow, std::int64_t now) {
  if (luma.size() < (kY + kHeight) * bytesPerRow) return std::nullopt;
  std::uint64_t code = 0;
  for (std::size_t cell = 0; cell < kCells; ++cell) {
    const unsigned level = brightness(luma, bytesPerRow, cell);
    if (level > 96 && level < 160) return std::nullopt;
    if (level >= 160) code |= std::uint64_t{1} << cell;
  }
  const std::uint64_t time = code >> 8;
  if (checkSum(time) != (code & 0xFF)) return std::nullopt;
  const auto age = (static_cast<std::uint64_t>(now / 1000) - time) & kTimeMask;
  return now - now % 1000 - static_cast<std::int64_t>(age) * 1000;
}

}  // namespace vlm::bench
