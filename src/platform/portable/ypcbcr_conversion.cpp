#include <algorithm>
#include <cmath>

#include "platform/portable/fallible.h"

namespace vlm::platform::portable {
namespace {

constexpr vImage_Error kvImageInvalidParameter = -21773;

// 16 fractional bits: exact to well below half a step for every input.
constexpr int kFraction = 16;
constexpr std::int32_t kHalf = 1 << (kFraction - 1);

std::int32_t fixed(double value) {
  return static_cast<std::int32_t>(std::lround(value * (1 << kFraction)));
}

std::uint8_t toByte(std::int32_t value) {
  return static_cast<std::uint8_t>(std::clamp(value >> kFraction, 0, 255));
}

}  // namespace

vImage_Error generateConversion(const vImage_YpCbCrToARGBMatrix& matrix,
                                const vImage_YpCbCrPixelRange& range, vImage_YpCbCrToARGB& out) {
  if (range.YpRangeMax <= range.Yp_bias || range.CbCrRangeMax <= range.CbCr_bias) {
    return kvImageInvalidParameter;
  }
  const double luma = 255.0 / (range.YpRangeMax - range.Yp_bias);
  const double chroma = 255.0 / (2.0 * (range.CbCrRangeMax - range.CbCr_bias));
  out.opaque = {fixed(matrix.Yp * luma),
                fixed(matrix.Cr_R * chroma),
                fixed(matrix.Cr_G * chroma),
                fixed(matrix.Cb_G * chroma),
                fixed(matrix.Cb_B * chroma),
                range.Yp_bias,
                range.CbCr_bias,
                range.YpMin,
                range.YpMax,
                range.CbCrMin,
                range.CbCrMax};
  return kvImageNoError;
}

vImage_Error convertToARGB(const vImage_Buffer& luma, const vImage_Buffer& chroma,
                           const vImage_Buffer& destination, const vImage_YpCbCrToARGB& conversion,
                           const std::array<std::uint8_t, 4>& permuteMap, std::uint8_t alpha) {
  const auto& c = conversion.opaque;
  for (std::size_t row = 0; row < destination.height; ++row) {
    const std::size_t chromaRow = chroma.height == 0 ? 0 : std::min(row / 2, chroma.height - 1);
    const auto* y = luma.data + row * luma.rowBytes;
    const auto* uv = chroma.data + chromaRow * chroma.rowBytes;
    auto* out = destination.data + row * destination.rowBytes;
    for (std::size_t x = 0; x < destination.width; ++x, out += 4) {
      const std::size_t pair = chroma.width == 0 ? 0 : std::min(x / 2, chroma.width - 1);
      const std::int32_t yp = (std::clamp<std::int32_t>(y[x], c[7], c[8]) - c[5]) * c[0] + kHalf;
      const std::int32_t cb = std::clamp<std::int32_t>(uv[2 * pair], c[9], c[10]) - c[6];
      const std::int32_t cr = std::clamp<std::int32_t>(uv[2 * pair + 1], c[9], c[10]) - c[6];
      const std::array<std::uint8_t, 4> argb{alpha, toByte(yp + cr * c[1]),
                                             toByte(yp + cr * c[2] + cb * c[3]),
                                             toByte(yp + cb * c[4])};
      for (std::size_t i = 0; i < 4; ++i) out[i] = argb[permuteMap[i]];
    }
  }
  return kvImageNoError;
}

}  // namespace vlm::platform::portable
