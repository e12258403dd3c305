#include "platform/linux/h264/block_energy.h"

#include <algorithm>
#include <cmath>

#include "platform/linux/h264/block.h"

namespace vlm::platform::h264 {
namespace {

constexpr std::size_t kQuarter = 8;

// Whole rows of eight, so that the compiler makes vectors of them.
unsigned squaredDifference(PlaneView a, PlaneView b, std::size_t rows) {
  unsigned sum = 0;
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t x = 0; x < kQuarter; ++x) {
      const int difference = a.pixels[row * a.stride + x] - b.pixels[row * b.stride + x];
      sum += static_cast<unsigned>(difference * difference);
    }
  }
  return sum;
}

float variance(PlaneView a, std::size_t rows) {
  unsigned sum = 0;
  unsigned squares = 0;
  for (std::size_t row = 0; row < rows; ++row) {
    for (std::size_t x = 0; x < kQuarter; ++x) {
      const unsigned pixel = a.pixels[row * a.stride + x];
      sum += pixel;
      squares += pixel * pixel;
    }
  }
  const auto count = static_cast<float>(rows * kQuarter);
  const float mean = static_cast<float>(sum) / count;
  return static_cast<float>(squares) / count - mean * mean;
}

// Calls with the number of each quarter, its place and its rows within the picture.
template <typename Visit>
void forEachQuarter(const YCbCrPicture& picture, std::size_t column, std::size_t row,
                    const Visit& visit) {
  for (std::size_t quarter = 0; quarter < 4; ++quarter) {
    const std::size_t x = column * kBlock + quarter % 2 * kQuarter;
    const std::size_t y = row * kBlock + quarter / 2 * kQuarter;
    if (x + kQuarter > picture.width || y >= picture.height) continue;
    visit(quarter, x, y, std::min(kQuarter, picture.height - y));
  }
}

}  // namespace

BlockEnergy differenceEnergy(const YCbCrPicture& a, const YCbCrPicture& b, std::size_t column,
                             std::size_t row) {
  BlockEnergy energy{};
  forEachQuarter(a, column, row, [&](auto quarter, auto x, auto y, auto rows) {
    const auto [lumaA, chromaA] = a.from(x, y);
    const auto [lumaB, chromaB] = b.from(x, y);
    const auto luma = squaredDifference(lumaA, lumaB, rows);
    const auto chroma = squaredDifference(chromaA, chromaB, rows / 2);
    energy[quarter] = static_cast<float>(luma + chroma) / (kQuarter * kQuarter);
  });
  return energy;
}

BlockEnergy detailEnergy(const YCbCrPicture& picture, std::size_t column, std::size_t row) {
  BlockEnergy energy{};
  forEachQuarter(picture, column, row, [&](auto quarter, auto x, auto y, auto rows) {
    energy[quarter] = variance(picture.luma.from(x, y), rows);
  });
  return energy;
}

float bitsOf(float energy, int quantiser, float threshold) {
  // The step of a quantiser doubles with every six, and is 1 at the fourth.
  const auto step = static_cast<float>(std::exp2((quantiser - 4) / 3.0));
  // Each of the coefficients costs half a bit for every doubling of its energy.
  return 0.5F * kQuarter * kQuarter * std::log2(1 + energy / (threshold * step));
}

}  // namespace vlm::platform::h264
