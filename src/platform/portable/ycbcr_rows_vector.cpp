// Compiled once for every instruction set that Highway knows for the architecture; the processor
// chooses one at run time. Vectors are in structures here, which those of unknown size can't.
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128)
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "platform/portable/ycbcr_rows_vector.cpp"
#include <hwy/foreach_target.h>
// These have to come after it.
#include <hwy/cache_control.h>
#include <hwy/highway.h>

#include <cstring>

#include "platform/portable/ycbcr_rows.h"

HWY_BEFORE_NAMESPACE();
namespace vlm::platform::portable::HWY_NAMESPACE {

#if HWY_TARGET == HWY_SCALAR || HWY_TARGET == HWY_EMU128

// Vectors that are only imitated are slower than the caller's own loop.
std::size_t convertBgra(const YCbCrRow&, std::size_t, const YCbCrFactors&, StoreKind) {
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
constexpr std::size_t kStreamAlignment = 64;          // a cache line, and the largest vector

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

// Both halves of a block as bytes, 0 and 255 standing for all beyond. The instruction that works
// within lanes has no name in Highway.
HWY_INLINE Bytes pack(Shorts lower, Shorts upper) {
#if HWY_TARGET <= HWY_AVX3
  return Bytes{_mm512_packus_epi16(lower.raw, upper.raw)};
#elif HWY_TARGET == HWY_AVX2
  return Bytes{_mm256_packus_epi16(lower.raw, upper.raw)};
#else
  static_assert(kLanes == 1);
  const hn::Half<decltype(kBytes)> half;
  return hn::Combine(kBytes, hn::DemoteTo(half, upper), hn::DemoteTo(half, lower));
#endif
}

HWY_INLINE Bytes addChroma(const Channel& luma, const Channel& chroma) {
  return pack(hn::ShiftRight<kYCbCrFraction>(hn::Add(luma.lower, chroma.lower)),
              hn::ShiftRight<kYCbCrFraction>(hn::Add(luma.upper, chroma.upper)));
}

template <StoreKind kStores>
HWY_INLINE void store(Shorts pixels, std::uint8_t* out) {
  if constexpr (kStores == StoreKind::kStreaming) {
    hn::Stream(hn::BitCast(kBytes, pixels), kBytes, out);
  } else {
    hn::StoreU(hn::BitCast(kBytes, pixels), kBytes, out);
  }
}

template <StoreKind kStores>
HWY_INLINE void storeBlock(const Channel& luma, const Chroma& chroma, std::uint8_t* out) {
  const auto r = addChroma(luma, chroma.r);
  const auto g = addChroma(luma, chroma.g);
  const auto b = addChroma(luma, chroma.b);
  const auto a = hn::Set(kBytes, std::uint8_t{255});
  const auto bgLower = hn::BitCast(kShorts, hn::InterleaveLower(kBytes, b, g));
  const auto bgUpper = hn::BitCast(kShorts, hn::InterleaveUpper(kBytes, b, g));
  const auto raLower = hn::BitCast(kShorts, hn::InterleaveLower(kBytes, r, a));
  const auto raUpper = hn::BitCast(kShorts, hn::InterleaveUpper(kBytes, r, a));
  store<kStores>(hn::InterleaveLower(kShorts, bgLower, raLower), out);
  store<kStores>(hn::InterleaveUpper(kShorts, bgLower, raLower), out + kBlock);
  store<kStores>(hn::InterleaveLower(kShorts, bgUpper, raUpper), out + 2 * kBlock);
  store<kStores>(hn::InterleaveUpper(kShorts, bgUpper, raUpper), out + 3 * kBlock);
}

template <StoreKind kStores>
HWY_INLINE void convertBlock(const YCbCrRow& row, std::size_t x, const YCbCrFactors& f,
                             std::uint8_t* out) {
  storeBlock<kStores>(loadLuma(row.luma + x, f), loadChroma(row.chroma + x, f), out);
}

// The block at `x`, of which only pixels [begin, end) are written.
HWY_INLINE void convertPart(const YCbCrRow& row, std::size_t x, std::size_t begin, std::size_t end,
                            const YCbCrFactors& f) {
  HWY_ALIGN std::uint8_t block[4 * kBlock];
  convertBlock<StoreKind::kCached>(row, x, f, block);
  std::memcpy(row.out + 4 * (x + begin), block + 4 * begin, 4 * (end - begin));
}

// What does not fill a block at the end is converted by one that reaches back. Streaming stores
// neither take addresses in between nor bear to be followed by others to the same line.
template <StoreKind kStores>
HWY_INLINE void convertBlocks(const YCbCrRow& row, std::size_t pixels,
                              const YCbCrFactors& factors) {
  const YCbCrFactors f = factors;  // a copy that stores to `out` can't be suspected of changing
  std::size_t x = 0;
  if constexpr (kStores == StoreKind::kStreaming) {
    x = (0 - reinterpret_cast<std::uintptr_t>(row.out)) % kStreamAlignment / 4;
    if (x > 0) convertPart(row, 0, 0, x, f);
  }
  for (; x + kBlock <= pixels; x += kBlock) convertBlock<kStores>(row, x, f, row.out + 4 * x);
  if (x == pixels) return;
  const std::size_t last = pixels - kBlock;
  if constexpr (kStores == StoreKind::kStreaming) {
    convertPart(row, last, x - last, kBlock, f);
  } else {
    convertBlock<kStores>(row, last, f, row.out + 4 * last);
  }
}

std::size_t convertBgra(const YCbCrRow& row, std::size_t pixels, const YCbCrFactors& factors,
                        StoreKind stores) {
  if (pixels < kBlock) return 0;
  if (stores == StoreKind::kStreaming) {
    convertBlocks<StoreKind::kStreaming>(row, pixels, factors);
  } else {
    convertBlocks<StoreKind::kCached>(row, pixels, factors);
  }
  return pixels;
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

std::size_t convertRowToBgra(const YCbCrRow& row, std::size_t pixels, const YCbCrFactors& factors,
                             StoreKind stores) {
  return HWY_DYNAMIC_DISPATCH(convertBgra)(row, pixels, factors, stores);
}

}  // namespace vlm::platform::portable
#endif
