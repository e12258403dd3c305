#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

// Conversion between the two framings of H.264: Annex B byte streams (start codes, parameter sets
// in band) toward the caller, length-prefixed samples (4-byte big-endian lengths, parameter sets
// out of band) toward the platform. Pure functions on bytes; malformed input shortens the output.
// NAL units are opaque: emulation prevention bytes are neither added nor removed.
namespace vlm::codec {

using Bytes = std::vector<std::uint8_t>;
using ByteView = std::span<const std::uint8_t>;

// The place of one NAL unit in a buffer: header byte included, start code not.
struct NalRange {
  std::int64_t offset = 0;
  std::int64_t length = 0;
  friend bool operator==(const NalRange&, const NalRange&) = default;
};

// The parameter sets a decoder holds: whole NAL units, replaced only when they change.
struct ParameterSets {
  std::optional<Bytes> sps;
  std::optional<Bytes> pps;
};

struct LengthPrefixedSample {
  Bytes bytes;
  bool changed = false;  // a parameter set came that was not held, or differs from the one held
};

// One access unit: for a key frame first the parameter sets, in order (an entry that could not be
// read is nothing, and is left out), then the units of the sample up to the first length that is 0
// or runs past the end. Each is preceded by a 4-byte start code.
Bytes buildAnnexBAccessUnit(bool keyframe, std::span<const std::optional<ByteView>> parameterSets,
                            ByteView sample);

// The NAL units of an Annex B buffer, in order, split at start codes of 3 or 4 bytes. What comes
// before the first start code is ignored; units of length 0 are reported where start codes touch.
std::vector<NalRange> findNalUnits(ByteView stream);

// The units of `stream` at `ranges` as one length-prefixed sample. Parameter sets go to `held`
// instead; SEI and access unit delimiters are dropped.
LengthPrefixedSample buildLengthPrefixedSample(ByteView stream, std::span<const NalRange> ranges,
                                               ParameterSets& held);

}  // namespace vlm::codec
