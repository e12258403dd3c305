#pragma once

#include <array>
#include <cstddef>
#include <cstdint>

// The inner loops of the conversion from bi-planar 4:2:0 to 4 bytes a pixel. All of them compute
// the same integers, so that no picture depends on the processor or on where a vector ends.
namespace vlm::platform::portable {

// Fractional bits of the 16-bit arithmetic: as many as leave room for every matrix and range in
// use. Each product is cut off once and half of what that loses is put back beforehand, so that the
// error stays near 1.5/32 of a step on top of the final rounding.
inline constexpr int kYCbCrFraction = 5;

// Factors are scaled by 2^(fraction + 8): the high half of their product with an 8-bit value in the
// upper byte of 16 bits carries the fraction. Offsets are scaled by 2^fraction. Chroma values count
// from 128.
struct YCbCrFactors {
  std::int16_t luma;
  std::int16_t crR;
  std::int16_t crG;
  std::int16_t cbG;
  std::int16_t cbB;
  std::int16_t offsetR;
  std::int16_t offsetG;
  std::int16_t offsetB;
  std::uint8_t lumaMin;
  std::uint8_t lumaMax;
  std::uint8_t chromaMin;
  std::uint8_t chromaMax;
};

// Two rows of luma that share one row of chroma pairs, and where their pixels go. A single row
// stands in both places.
struct YCbCrRows {
  std::array<const std::uint8_t*, 2> luma;
  const std::uint8_t* chroma;
  std::array<std::uint8_t*, 2> out;

  // The rows without their first `pixels`, an even number.
  YCbCrRows from(std::size_t pixels) const {
    return {{luma[0] + pixels, luma[1] + pixels},
            chroma + pixels,
            {out[0] + 4 * pixels, out[1] + 4 * pixels}};
  }
};

// Streaming stores pass the cache by, which suits images that would not stay in it anyway. They
// need `out` to be aligned, and are complete when finishStreaming() returns.
enum class StoreKind { kCached, kStreaming };
inline constexpr std::size_t kStreamAlignment = 64;
void finishStreaming();

// Converts as many of the first `pixels` as the processor's vectors fill, alpha 255, to the byte
// order B, G, R, A. The answer is how many those are: an even number, 0 without vectors.
std::size_t convertRowsToBgra(const YCbCrRows& rows, std::size_t pixels,
                              const YCbCrFactors& factors, StoreKind stores);

}  // namespace vlm::platform::portable
