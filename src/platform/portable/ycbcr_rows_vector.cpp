// Compiled once for every instruction set that Highway knows for the architecture; the processor
// chooses one at run time. Vectors stand in structures here, which those of unknown size can't.
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/portable/ycbcr_rows_vector.cpp"
#include <hwy/foreach_target.h>
// These have to come after it.
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include "platform/portable/ycbcr_rows.h"

HWY_BEFORE_NAMESPACE();
namespace vlm::platform::portable::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Vectors that are only imitated are slower than the caller's own loop.
std::size_t convertBgra(const YCbCrRows&, std::size_t, const YCbCrFactors&, StoreKind) {
  return 0;
}

#else

namespace hn = hwy::HWY_NAMESPACE;

constexpr hn::ScalableTag<std::uint8_t> kBytes;
constexpr hn::Repartition<std::int16_t, decltype(kBytes)> kShorts;
constexpr hn::Repartition<std::uint16_t, decltype(kBytes)> kUnsigned;
constexpr hn::Repartition<std::uint32_t, decltype(kBytes)> kGroups;
using Bytes = hn::Vec<decltype(kBytes)>;
using Shorts = hn::Vec<decltype(kShorts)>;

constexpr std::size_t kBlock = hn::MaxLanes(kBytes);  // pixels taken at a time
constexpr std::size_t kLanes = (kBlock + 15) / 16;    // of 128 bits

// Interleaving works within 128-bit lanes. Groups of four pixels (or two chroma pairs) are dealt
// out to the lanes as they are loaded, so that the pixels leave in the order of the picture.
HWY_INLINE Bytes loadDealt(const std::uint8_t* at) {
  const auto bytes = hn::LoadU(kBytes, at);
  if constexpr (kLanes == 1) {
    return bytes;
  } else {
    HWY_ALIGN std::uint32_t order[hn::MaxLanes(kGroups)];
    for (std::uint32_t i = 0; i < hn::MaxLanes(kGroups); ++i) {
      order[i] = i % 4 * std::uint32_t{kLanes} + i / 4;
    }
    return hn::BitCast(kBytes, hn::TableLookupLanes(hn::BitCast(kGroups, bytes),
                                                    hn::SetTableIndices(kGroups, order)));
  }
}

HWY_INLINE Bytes clampBytes(Bytes bytes, std::uint8_t low, std::uint8_t high) {
  return hn::Min(hn::Max(bytes, hn::Set(kBytes, low)), hn::Set(kBytes, high));
}

// One number for each pixel of a block, split as the interleaving splits it.
struct Channel {
  Shorts lower;
  Shorts upper;
};

struct Chroma {
  Channel r;
  Channel g;
  Channel b;
};

// A number for each pair becomes one for each of its two pixels.
HWY_INLINE Channel spread(Shorts pairs) {
  return {hn::InterleaveLower(kShorts, pairs, pairs), hn::InterleaveUpper(kShorts, pairs, pairs)};
}

HWY_INLINE Chroma loadChroma(const std::uint8_t* at, const YCbCrFactors& f) {
  const auto clamped = clampBytes(loadDealt(at), f.chromaMin, f.chromaMax);
  const auto pairs = hn::BitCast(kShorts, hn::Xor(clamped, hn::Set(kBytes, std::uint8_t{128})));
  const auto cb = hn::ShiftLeft<8>(pairs);
  const auto cr = hn::And(pairs, hn::Set(kShorts, std::int16_t{-256}));
  const auto times = [](Shorts a, std::int16_t factor)
                         HWY_ATTR { return hn::MulHigh(a, hn::Set(kShorts, factor)); };
  const auto g = hn::Add(times(cb, f.cbG), times(cr, f.crG));
  return {spread(hn::Add(times(cr, f.crR), hn::Set(kShorts, f.offsetR))),
          spread(hn::Add(g, hn::Set(kShorts, f.offsetG))),
          spread(hn::Add(times(cb, f.cbB), hn::Set(kShorts, f.offsetB)))};
}

HWY_INLINE Channel loadLuma(const std::uint8_t* at, const YCbCrFactors& f) {
  const auto luma = clampBytes(loadDealt(at), f.lumaMin, f.lumaMax);
  const auto zero = hn::Zero(kBytes);
  const auto factor = hn::Set(kUnsigned, static_cast<std::uint16_t>(f.luma));
  const auto scaled = [&](Bytes half) HWY_ATTR {
    return hn::BitCast(kShorts, hn::MulHigh(hn::BitCast(kUnsigned, half), factor));
  };
  return {scaled(hn::InterleaveLower(kBytes, zero, luma)),
          scaled(hn::InterleaveUpper(kBytes, zero, luma))};
}

HWY_INLINE Shorts finish(Shorts luma, Shorts chroma) {
  const auto value = hn::ShiftRight<kYCbCrFraction>(hn::Add(luma, chroma));
  return hn::Min(hn::Max(value, hn::Zero(kShorts)), hn::Set(kShorts, std::int16_t{255}));
}

template <StoreKind kStores>
HWY_INLINE void store(Shorts pixels, std::uint8_t* out) {
  if constexpr (kStores == StoreKind::kStreaming) {
    hn::Stream(hn::BitCast(kBytes, pixels), kBytes, out);
  } else {
    hn::StoreU(hn::BitCast(kBytes, pixels), kBytes, out);
  }
}

// Half a block: two vectors of finished pixels.
template <StoreKind kStores>
HWY_INLINE void storePixels(Shorts luma, Shorts chromaR, Shorts chromaG, Shorts chromaB,
                            std::uint8_t* out) {
  const auto bg = hn::Or(finish(luma, chromaB), hn::ShiftLeft<8>(finish(luma, chromaG)));
  const auto ra = hn::Or(finish(luma, chromaR), hn::Set(kShorts, std::int16_t{-256}));
  store<kStores>(hn::InterleaveLower(kShorts, bg, ra), out);
  store<kStores>(hn::InterleaveUpper(kShorts, bg, ra), out + kBlock);
}

template <StoreKind kStores>
HWY_INLINE void convertBlocks(const YCbCrRows& rows, std::size_t pixels,
                              const YCbCrFactors& factors) {
  const YCbCrFactors f = factors;  // a copy that stores to `out` can't be suspected of changing
  for (std::size_t x = 0; x < pixels; x += kBlock) {
    const auto chroma = loadChroma(rows.chroma + x, f);
    for (std::size_t row = 0; row < rows.luma.size(); ++row) {
      const auto luma = loadLuma(rows.luma[row] + x, f);
      auto* const out = rows.out[row] + 4 * x;
      storePixels<kStores>(luma.lower, chroma.r.lower, chroma.g.lower, chroma.b.lower, out);
      storePixels<kStores>(luma.upper, chroma.r.upper, chroma.g.upper, chroma.b.upper,
                           out + 2 * kBlock);
    }
  }
}

std::size_t convertBgra(const YCbCrRows& rows, std::size_t pixels, const YCbCrFactors& factors,
                        StoreKind stores) {
  const std::size_t whole = pixels / kBlock * kBlock;
  if (stores == StoreKind::kStreaming) {
    convertBlocks<StoreKind::kStreaming>(rows, whole, factors);
  } else {
    convertBlocks<StoreKind::kCached>(rows, whole, factors);
  }
  return whole;
}

#endif

}  // namespace vlm::platform::portable::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace vlm::platform::portable {

HWY_EXPORT(convertBgra);

void finishStreaming() {
  hwy::FlushStream();
}

std::size_t convertRowsToBgra(const YCbCrRows& rows, std::size_t pixels,
                              const YCbCrFactors& factors, StoreKind stores) {
  return HWY_DYNAMIC_DISPATCH(convertBgra)(rows, pixels, factors, stores);
}

}  // namespace vlm::platform::portable
#endif
