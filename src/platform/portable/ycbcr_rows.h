#pragma once

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

// A row of luma, the row of chroma pairs that belongs to it, and where its pixels go.
struct YCbCrRow {
  const std::uint8_t* luma;
  const std::uint8_t* chroma;
  std::uint8_t* out;
};

// Streaming stores pass the cache by, which suits images that would not stay in it anyway. They
// need `out` to be a multiple of 8, as the first pixels of chroma pairs are then the ones that lie
// on boundaries, and are complete when finishStreaming() returns.
enum class StoreKind { kCached, kStreaming };
void finishStreaming();

// Converts the first `pixels`, an even number, to the byte order B, G, R, A, alpha 255. The answer
// is how many were converted: none where the processor has no vectors or too few pixels fill one.
std::size_t convertRowToBgra(const YCbCrRow& row, std::size_t pixels, const YCbCrFactors& factors,
                             StoreKind stores);

}  // namespace vlm::platform::portable
