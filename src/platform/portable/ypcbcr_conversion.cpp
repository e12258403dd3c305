#include <algorithm>
#include <cmath>
#include <cstring>
#include <limits>
#include <optional>

#include "platform/portable/fallible.h"
#include "platform/portable/ycbcr_rows.h"

namespace vlm::platform::portable {
namespace {

using PermuteMap = std::array<std::uint8_t, 4>;

constexpr vImage_Error kvImageInvalidParameter = -21773;
constexpr std::size_t kBytesPerPixel = 4;
constexpr PermuteMap kBgraFromArgb{3, 2, 1, 0};
constexpr std::uint8_t kOpaque = 255;
constexpr int kChromaCentre = 128;
// Pictures from here on gain nothing from the cache: it would not keep them until they are read.
constexpr std::size_t kStreamingSize = std::size_t{4} << 20;

// Scaled numbers on their way into 16 bits.
class Scaled {
 public:
  explicit Scaled(int bits) : scale_(std::ldexp(1.0, bits)) {}

  std::int16_t operator()(double value) {
    const double scaled = std::round(value * scale_);
    fits_ = fits_ && std::abs(scaled) <= std::numeric_limits<std::int16_t>::max();
    return fits_ ? static_cast<std::int16_t>(scaled) : std::int16_t{0};
  }
  bool allFit() const { return fits_; }

 private:
  double scale_;
  bool fits_ = true;
};

std::uint8_t toByte(std::int32_t value) {
  return static_cast<std::uint8_t>(std::clamp(value, 0, 255));
}

// Nothing when the numbers go beyond 16 bits, which no matrix and range in use come near.
std::optional<YCbCrFactors> makeFactors(const vImage_YpCbCrToARGBMatrix& matrix,
                                        const vImage_YpCbCrPixelRange& range) {
  const double luma = matrix.Yp * 255.0 / (1.0 * range.YpRangeMax - range.Yp_bias);
  const double chroma = 255.0 / (2.0 * range.CbCrRangeMax - 2.0 * range.CbCr_bias);
  const double centre = chroma * (kChromaCentre - range.CbCr_bias);
  // Half a step for rounding, and half of what cutting off each product loses.
  const double lostByOne = std::ldexp(0.5, -kYCbCrFraction);
  const double base = 0.5 - luma * range.Yp_bias + 2 * lostByOne;
  Scaled factor(kYCbCrFraction + 8);
  Scaled offset(kYCbCrFraction);
  const YCbCrFactors factors{
      .luma = factor(luma),
      .crR = factor(matrix.Cr_R * chroma),
      .crG = factor(matrix.Cr_G * chroma),
      .cbG = factor(matrix.Cb_G * chroma),
      .cbB = factor(matrix.Cb_B * chroma),
      .offsetR = offset(base + matrix.Cr_R * centre),
      .offsetG = offset(base + (matrix.Cr_G + matrix.Cb_G) * centre + lostByOne),
      .offsetB = offset(base + matrix.Cb_B * centre),
      .lumaMin = toByte(range.YpMin),
      .lumaMax = toByte(range.YpMax),
      .chromaMin = toByte(range.CbCrMin),
      .chromaMax = toByte(range.CbCrMax),
  };
  if (factors.luma < 0 || !factor.allFit() || !offset.allFit()) return std::nullopt;
  return factors;
}

constexpr std::int32_t product(std::int32_t value, std::int16_t factor) {
  return (value * 256 * factor) >> 16;
}

// One pixel: what the vectors do to each of theirs.
std::array<std::uint8_t, 4> convertPixel(std::uint8_t luma, const std::uint8_t* pair,
                                         const YCbCrFactors& f, std::uint8_t alpha) {
  const std::int32_t y = product(std::clamp(luma, f.lumaMin, f.lumaMax), f.luma);
  const std::int32_t cb = std::clamp(pair[0], f.chromaMin, f.chromaMax) - kChromaCentre;
  const std::int32_t cr = std::clamp(pair[1], f.chromaMin, f.chromaMax) - kChromaCentre;
  const std::int32_t r = y + product(cr, f.crR) + f.offsetR;
  const std::int32_t g = y + product(cb, f.cbG) + product(cr, f.crG) + f.offsetG;
  const std::int32_t b = y + product(cb, f.cbB) + f.offsetB;
  return {alpha, toByte(r >> kYCbCrFraction), toByte(g >> kYCbCrFraction),
          toByte(b >> kYCbCrFraction)};
}

// The conversion of one whole image.
class ImageConversion {
 public:
  ImageConversion(const vImage_Buffer& luma, const vImage_Buffer& chroma,
                  const vImage_Buffer& destination, const YCbCrFactors& factors,
                  const PermuteMap& permuteMap, std::uint8_t alpha)
      : luma_(luma),
        chroma_(chroma),
        out_(destination),
        factors_(factors),
        permuteMap_(permuteMap),
        alpha_(alpha),
        vectors_(permuteMap == kBgraFromArgb && alpha == kOpaque) {
    const auto base = reinterpret_cast<std::uintptr_t>(out_.data);
    if (vectors_ && out_.height * out_.rowBytes >= kStreamingSize &&
        (base | out_.rowBytes) % (2 * kBytesPerPixel) == 0) {
      stores_ = StoreKind::kStreaming;
    }
  }

  void run() const {
    for (std::size_t y = 0; y < out_.height; ++y) convertRow(y);
    if (stores_ == StoreKind::kStreaming) finishStreaming();
  }

 private:
  void convertRow(std::size_t y) const {
    const YCbCrRow row{luma_.data + y * luma_.rowBytes,
                       chroma_.data + std::min(y / 2, chroma_.height - 1) * chroma_.rowBytes,
                       out_.data + y * out_.rowBytes};
    const std::size_t paired = 2 * std::min(out_.width / 2, chroma_.width);
    std::size_t x = vectors_ ? convertRowToBgra(row, paired, factors_, stores_) : 0;
    for (; x < out_.width; ++x) {
      const auto* pair = row.chroma + 2 * std::min(x / 2, chroma_.width - 1);
      const auto argb = convertPixel(row.luma[x], pair, factors_, alpha_);
      auto* const out = row.out + kBytesPerPixel * x;
      for (std::size_t i = 0; i < kBytesPerPixel; ++i) out[i] = argb[permuteMap_[i]];
    }
  }

  const vImage_Buffer& luma_;
  const vImage_Buffer& chroma_;
  const vImage_Buffer& out_;
  const YCbCrFactors& factors_;
  const PermuteMap& permuteMap_;
  std::uint8_t alpha_;
  bool vectors_;
  StoreKind stores_ = StoreKind::kCached;
};

}  // namespace

vImage_Error generateConversion(const vImage_YpCbCrToARGBMatrix& matrix,
                                const vImage_YpCbCrPixelRange& range, vImage_YpCbCrToARGB& out) {
  if (range.YpRangeMax <= range.Yp_bias || range.CbCrRangeMax <= range.CbCr_bias ||
      range.YpMax < range.YpMin || range.CbCrMax < range.CbCrMin) {
    return kvImageInvalidParameter;
  }
  const auto factors = makeFactors(matrix, range);
  if (!factors) return kvImageInvalidParameter;
  static_assert(sizeof(YCbCrFactors) <= sizeof out.opaque);
  std::memcpy(out.opaque.data(), &*factors, sizeof *factors);
  return kvImageNoError;
}

vImage_Error convertToARGB(const vImage_Buffer& luma, const vImage_Buffer& chroma,
                           const vImage_Buffer& destination, const vImage_YpCbCrToARGB& conversion,
                           const PermuteMap& permuteMap, std::uint8_t alpha) {
  if (destination.width == 0 || destination.height == 0) return kvImageNoError;
  YCbCrFactors factors;
  std::memcpy(&factors, conversion.opaque.data(), sizeof factors);
  // An image of one column or row may be described without any pair: it is grey.
  static constexpr std::array<std::uint8_t, 2> kNeutral{kChromaCentre, kChromaCentre};
  const bool hasChroma = chroma.width > 0 && chroma.height > 0;
  const vImage_Buffer grey{const_cast<std::uint8_t*>(kNeutral.data()), 1, 1, kNeutral.size()};
  ImageConversion(luma, hasChroma ? chroma : grey, destination, factors, permuteMap, alpha).run();
  return kvImageNoError;
}

}  // namespace vlm::platform::portable
