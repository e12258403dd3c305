#include "codec/bitstream.h"

#include <algorithm>
#include <array>

namespace vlm::codec {
namespace {

constexpr std::array<std::uint8_t, 4> kStartCode{0, 0, 0, 1};
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
  const auto size = static_cast<std::int64_t>(stream.size());
  std::int64_t start = -1;
  std::int64_t i = 0;
  while (i + 3 <= size) {
    const auto* at = stream.data() + i;
    std::int64_t codeSize = 0;
    if (at[0] == 0 && at[1] == 0) {
      if (at[2] == 1) codeSize = 3;
      if (i + 4 <= size && at[2] == 0 && at[3] == 1) codeSize = 4;
    }
    if (codeSize == 0) {
      ++i;
      continue;
    }
    if (start >= 0) units.push_back({start, i - start});
    i += codeSize;
    start = i;
  }
  if (start >= 0 && start < size) units.push_back({start, size - start});
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
