#include "platform/linux/screen/scaler.h"

#include <algorithm>
#include <cmath>
#include <cstddef>

namespace vlm::platform::screen {
namespace {

constexpr int kWhole = 256;
constexpr unsigned kHalf = kWhole / 2;

// The share of each input pixel from `first` on, so that all together are one.
std::vector<double> sharesAt(double position, double step, int input, int& first) {
  if (step <= 1) {  // between the centres of two pixels
    const double centre = std::clamp((position + 0.5) * step - 0.5, 0.0, input - 1.0);
    first = static_cast<int>(centre);
    const double second = centre - first;
    return second > 0 ? std::vector<double>{1 - second, second} : std::vector<double>{1};
  }
  const double from = position * step;
  const double to = std::min(from + step, static_cast<double>(input));
  first = static_cast<int>(from);
  std::vector<double> shares;
  for (int pixel = first; pixel < to; ++pixel) {
    const double covered = std::min<double>(pixel + 1, to) - std::max<double>(pixel, from);
    shares.push_back(covered / (to - from));
  }
  return shares;
}

}  // namespace

Scaler::Axis::Axis(int input, int output) : weightsAt{0} {
  const double step = static_cast<double>(input) / output;
  for (int position = 0; position < output; ++position) {
    int begin = 0;
    const auto shares = sharesAt(position, step, input, begin);
    first.push_back(begin);
    // Rounding the running total keeps the sum exact.
    double total = 0;
    int given = 0;
    for (std::size_t i = 0; i < shares.size(); ++i) {
      total += shares[i];
      const int until =
          i + 1 == shares.size() ? kWhole : static_cast<int>(std::lround(total * kWhole));
      weights.push_back(static_cast<std::uint16_t>(until - given));
      given = until;
    }
    weightsAt.push_back(static_cast<int>(weights.size()));
  }
}

Scaler::Scaler(Size input, Size output)
    : input_(input),
      output_(output),
      across_(input.width, output.width),
      down_(input.height, output.height) {}

Rectangle Scaler::footprint(const Rectangle& area) const {
  if (isIdentity()) return area;
  const int x = across_.first[area.x];
  const int y = down_.first[area.y];
  return {x, y, across_.end(area.right() - 1) - x, down_.end(area.bottom() - 1) - y};
}

Rectangle Scaler::reach(const Rectangle& area) const {
  if (isIdentity() || area.isEmpty()) return area;
  // Footprints never go back, neither at their beginning nor at their end.
  const auto reachOn = [](const Axis& axis, int from, int to, int& length) {
    const int count = static_cast<int>(axis.first.size());
    int begin = 0;
    for (int span = count; span > 0;) {  // the first position whose footprint ends after `from`
      const int half = span / 2;
      if (axis.end(begin + half) <= from) {
        begin += half + 1;
        span -= half + 1;
      } else {
        span = half;
      }
    }
    const auto end = std::ranges::lower_bound(axis.first, to);
    length = static_cast<int>(end - axis.first.begin()) - begin;
    return begin;
  };
  Rectangle result;
  result.x = reachOn(across_, area.x, area.right(), result.width);
  result.y = reachOn(down_, area.y, area.bottom(), result.height);
  return result;
}

// Adds up the input rows of one output row, still in parts of 256. The sums fit: the weights are
// 256 together.
void Scaler::mixRows(PlaneView pixels, const Rectangle& inputArea, int row) {
  const std::size_t count = static_cast<std::size_t>(inputArea.width) * kBytesPerPixel;
  sums_.assign(count, 0);
  std::uint16_t* const sums = sums_.data();
  const std::uint16_t* weight = &down_.weights[down_.weightsAt[row]];
  for (int y = down_.first[row]; y < down_.end(row); ++y, ++weight) {
    const std::uint8_t* const from = pixels.row(static_cast<std::size_t>(y - inputArea.y));
    const std::uint16_t share = *weight;
    for (std::size_t i = 0; i < count; ++i) {
      sums[i] = static_cast<std::uint16_t>(sums[i] + from[i] * share);
    }
  }
}

void Scaler::scale(PlaneView pixels, const Rectangle& inputArea, const Rectangle& outputRows,
                   Plane output) {
  for (int row = outputRows.y; row < outputRows.bottom(); ++row) {
    mixRows(pixels, inputArea, row);
    std::uint8_t* to = output.row(static_cast<std::size_t>(row - outputRows.y));
    for (int column = outputRows.x; column < outputRows.right(); ++column) {
      const std::size_t begin = static_cast<std::size_t>(across_.first[column] - inputArea.x);
      const std::uint16_t* from = &sums_[begin * kBytesPerPixel];
      std::uint32_t mixed[kBytesPerPixel] = {};
      for (int w = across_.weightsAt[column]; w < across_.weightsAt[column + 1]; ++w) {
        const std::uint32_t share = across_.weights[w];
        for (std::size_t c = 0; c < kBytesPerPixel; ++c) mixed[c] += from[c] * share;
        from += kBytesPerPixel;
      }
      for (std::size_t c = 0; c < kBytesPerPixel; ++c) {
        *to++ = static_cast<std::uint8_t>((mixed[c] + kHalf * kWhole) / (kWhole * kWhole));
      }
    }
  }
}

}  // namespace vlm::platform::screen
