#include "codec/bitstream.h"

#include <algorithm>
#include <array>

namespace vlm::codec {
namespace {

constexpr std::array<std::uint8_t, 4> kStartCode{0, 0, 0, 1};
constexpr std::size_t kShortStartCode = 3;
constexpr std::size_t kBlock = 128;
constexpr std::size_t kLengthSize = 4;
// Room for the parameter sets and start codes of a typical key frame, so that one allocation does.
constexpr std::size_t kWriterHeadroom = 128;
constexpr std::size_t kReaderHeadroom = 16;

constexpr int kTypeSei = 6;
constexpr int kTypeSequenceParameterSet = 7;
constexpr int kTypePictureParameterSet = 8;
constexpr int kTypeAccessUnitDelimiter = 9;

void append(Bytes& out, ByteView bytes) {
  out.insert(out.end(), bytes.begin(), bytes.end());
}

std::uint32_t readLength(const std::uint8_t* at) {
  return std::uint32_t{at[0]} << 24 | std::uint32_t{at[1]} << 16 | std::uint32_t{at[2]} << 8 |
         std::uint32_t{at[3]};
}

std::array<std::uint8_t, kLengthSize> lengthPrefix(std::size_t length) {
  return {static_cast<std::uint8_t>(length >> 24), static_cast<std::uint8_t>(length >> 16),
          static_cast<std::uint8_t>(length >> 8), static_cast<std::uint8_t>(length)};
}

// Keeps `unit` as the parameter set in force. True when that changed anything.
bool hold(std::optional<Bytes>& held, ByteView unit) {
  if (held && std::ranges::equal(*held, unit)) return false;
  held.emplace(unit.begin(), unit.end());
  return true;
}

// Whether 00 00 01 begins at one of the kBlock bytes from `at`. Looks 2 bytes further. The loop is
// of a shape that compilers turn into a few vector instructions for each 16 bytes.
bool blockHoldsStartCode(const std::uint8_t* at) {
  std::uint8_t least = 0xFF;
  for (std::size_t i = 0; i < kBlock; ++i) {
    const auto mismatch = static_cast<std::uint8_t>(at[i] | at[i + 1] | (at[i + 2] ^ 1));
    least = std::min(least, mismatch);
  }
  return least == 0;
}

// Calls `found` with each position in [begin, end) where 00 00 01 begins. The third byte tells how
// far the next such position must be. Returns where to go on: at `end` or up to 2 bytes further.
template <class Found>
std::size_t step(const std::uint8_t* bytes, std::size_t begin, std::size_t end, Found& found) {
  std::size_t i = begin;
  while (i < end) {
    const std::uint8_t third = bytes[i + 2];
    if (third == 0) {
      ++i;
      continue;
    }
    if (third == 1 && bytes[i] == 0 && bytes[i + 1] == 0) found(i);
    i += kShortStartCode;
  }
  return i;
}

// Nearly all of a stream is the inside of NAL units, where blocks are passed over as a whole.
template <class Found>
void forEachStartCode(ByteView stream, Found found) {
  if (stream.size() < kShortStartCode) return;
  const std::uint8_t* const bytes = stream.data();
  const std::size_t end = stream.size() - (kShortStartCode - 1);
  std::size_t i = 0;
  while (i + kBlock <= end) {
    i = blockHoldsStartCode(bytes + i) ? step(bytes, i, i + kBlock, found) : i + kBlock;
  }
  step(bytes, i, end, found);
}

}  // namespace

Bytes buildAnnexBAccessUnit(bool keyframe, std::span<const std::optional<ByteView>> parameterSets,
                            ByteView sample) {
  Bytes out;
  out.reserve(sample.size() + kWriterHeadroom);
  if (keyframe) {
    for (const auto& set : parameterSets) {
      if (!set) continue;
      append(out, kStartCode);
      append(out, *set);
    }
  }
  while (sample.size() >= kLengthSize) {
    const std::size_t length = readLength(sample.data());
    sample = sample.subspan(kLengthSize);
    if (length == 0 || length > sample.size()) break;
    append(out, kStartCode);
    append(out, sample.first(length));
    sample = sample.subspan(length);
  }
  return out;
}

std::vector<NalRange> findNalUnits(ByteView stream) {
  std::vector<NalRange> units;
  std::int64_t open = -1;
  forEachStartCode(stream, [&](std::size_t zeros) {
    const auto code =
        static_cast<std::int64_t>(zeros > 0 && stream[zeros - 1] == 0 ? zeros - 1 : zeros);
    if (open >= 0) units.push_back({open, code - open});
    open = static_cast<std::int64_t>(zeros + kShortStartCode);
  });
  const auto size = static_cast<std::int64_t>(stream.size());
  if (open >= 0 && open < size) units.push_back({open, size - open});
  return units;
}

LengthPrefixedSample buildLengthPrefixedSample(ByteView stream, std::span<const NalRange> ranges,
                                               ParameterSets& held) {
  LengthPrefixedSample sample;
  sample.bytes.reserve(stream.size() + kReaderHeadroom);
  for (const auto& range : ranges) {
    if (range.length <= 0) continue;
    const auto unit = stream.subspan(static_cast<std::size_t>(range.offset),
                                     static_cast<std::size_t>(range.length));
    switch (unit.front() & 0x1F) {
      case kTypeSei:
      case kTypeAccessUnitDelimiter:
        break;
      case kTypeSequenceParameterSet:
        sample.changed |= hold(held.sps, unit);
        break;
      case kTypePictureParameterSet:
        sample.changed |= hold(held.pps, unit);
        break;
      default:
        append(sample.bytes, lengthPrefix(unit.size()));
        append(sample.bytes, unit);
    }
  }
  return sample;
}

}  // namespace vlm::codec
