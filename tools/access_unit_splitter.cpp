#include "access_unit_splitter.h"

#include <algorithm>
#include <array>

namespace vlm::tools {
namespace {

enum NalUnitType : std::uint8_t {
  kSlice = 1,
  kPartitionA = 2,
  kIdrSlice = 5,
  kSei = 6,
  kDelimiter = 9,
  kPrefix = 14,
  kLastReserved = 18,
};

constexpr std::array<std::uint8_t, 3> kStartCode{0, 0, 1};

}  // namespace

AccessUnitSplitter::AccessUnitSplitter(std::span<const std::uint8_t> stream)
    : stream_(stream), unit_(unitFrom(0)) {}

std::optional<AccessUnit> AccessUnitSplitter::next() {
  const std::size_t begin = unit_.begin;
  bool hasPicture = false;
  bool keyframe = false;
  while (unit_.payload < stream_.size() && !(hasPicture && startsAccessUnit(unit_))) {
    hasPicture = hasPicture || isPicture(unit_);
    keyframe = keyframe || type(unit_) == kIdrSlice;
    unit_ = unitFrom(unit_.payload);
  }
  if (!hasPicture) return std::nullopt;
  return AccessUnit{stream_.subspan(begin, unit_.begin - begin), keyframe};
}

AccessUnitSplitter::Unit AccessUnitSplitter::unitFrom(std::size_t from) const {
  const auto rest = stream_.subspan(from);
  const auto found = std::search(rest.begin(), rest.end(), kStartCode.begin(), kStartCode.end());
  if (found == rest.end()) return {stream_.size(), stream_.size()};
  const std::size_t begin = from + static_cast<std::size_t>(found - rest.begin());
  // A zero in front belongs to the start code: it is then four bytes long.
  const bool isLong = begin > from && stream_[begin - 1] == 0;
  return {isLong ? begin - 1 : begin, begin + kStartCode.size()};
}

std::uint8_t AccessUnitSplitter::type(const Unit& unit) const {
  return stream_[unit.payload] & 0x1f;
}

bool AccessUnitSplitter::isPicture(const Unit& unit) const {
  const auto is = type(unit);
  return is == kSlice || is == kPartitionA || is == kIdrSlice;
}

// After a picture: a unit that can only come before the next one, or its first slice, whose
// first macroblock is number 0, coded as a single set bit.
bool AccessUnitSplitter::startsAccessUnit(const Unit& unit) const {
  const auto is = type(unit);
  if ((is >= kSei && is <= kDelimiter) || (is >= kPrefix && is <= kLastReserved)) return true;
  const std::size_t header = unit.payload + 1;
  return isPicture(unit) && header < stream_.size() && (stream_[header] & 0x80) != 0;
}

}  // namespace vlm::tools
