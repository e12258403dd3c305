#include "codec/bitstream.h"

#include <algorithm>
#include <array>
#include <utility>

namespace vlm::codec {
namespace {

constexpr std::array<std::uint8_t, 4> kStartCode{0, 0, 0, 1};
constexpr std::size_t kShortStartCode = 3;
// Nearly all of a stream is the inside of long NAL units, where blocks are passed over as a whole.
constexpr std::size_t kBlock = 128;
// Gone through at once where one block after the other holds start codes.
constexpr std::size_t kManyBlocks = 8 * kBlock;
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

// The least value of `of(i)` over a block. Loops of this shape compile to a few vector instructions
// for each 16 bytes.
template <class Of>
std::uint8_t leastInBlock(Of of) {
  std::uint8_t least = 0xFF;
  for (std::size_t i = 0; i < kBlock; ++i)
    least = std::min(least, static_cast<std::uint8_t>(of(i)));
  return least;
}

// Whether 00 00 01 begins at one of the kBlock bytes from `at`. Looks 2 bytes further. Two zeros in
// a row are rare enough in what encoders produce to be asked for first.
bool blockHoldsStartCode(const std::uint8_t* at) {
  return leastInBlock([at](std::size_t i) { return at[i] | at[i + 1]; }) == 0 &&
         leastInBlock([at](std::size_t i) { return at[i] | at[i + 1] | (at[i + 2] ^ 1); }) == 0;
}

// The first place from `at` whose block holds a start code, or where less than a block is left
// before `end`. Kept out of its caller's loop, whose variables then stay in registers.
[[gnu::noinline]] std::size_t passBlocks(const std::uint8_t* bytes, std::size_t at,
                                         std::size_t end) {
  while (at + kBlock <= end && !blockHoldsStartCode(bytes + at)) at += kBlock;
  return at;
}

// For so many more. An ordinary access unit needs one allocation; one of very many units grows in
// large leaps.
[[gnu::noinline]] void makeRoom(std::vector<NalRange>& units, std::size_t more) {
  if (units.capacity() - units.size() < more) units.reserve(4 * units.size() + more);
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
  const auto add = [&](std::size_t end) {
    units.push_back({open, static_cast<std::int64_t>(end) - open});
  };
  const std::uint8_t* const bytes = stream.data();
  const std::size_t end = stream.size() - std::min(stream.size(), kShortStartCode - 1);
  for (std::size_t at = 0; at < end;) {
    const std::size_t from = std::exchange(at, passBlocks(bytes, at, end));
    const bool again = at == from && at > 0;
    const std::size_t stepsEnd = std::min(at + (again ? kManyBlocks : kBlock), end);
    makeRoom(units, (stepsEnd - at) / kShortStartCode + 1);
    while (at < stepsEnd) {
      // The third byte says how far away the next start code is at least.
      const std::uint8_t third = bytes[at + 2];
      if (third == 0) {
        ++at;
        continue;
      }
      if (third == 1 && bytes[at] == 0 && bytes[at + 1] == 0) {
        if (open >= 0) add(bytes[at - 1] == 0 ? at - 1 : at);
        open = static_cast<std::int64_t>(at + kShortStartCode);
      }
      at += kShortStartCode;
    }
  }
  if (open >= 0 && open < std::ssize(stream)) add(stream.size());
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
