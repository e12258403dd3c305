#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vlm::platform::h264 {

// The bytes of a length before each NAL unit of a sample.
inline constexpr std::size_t kLengthPrefix = 4;

enum class NalUnitType : std::uint8_t {
  slice = 1,
  partitionA = 2,
  idrSlice = 5,
  sequenceSet = 7,
  pictureSet = 8,
};

// Looks at the unit's first byte, which must be there.
inline NalUnitType typeOf(std::span<const std::uint8_t> unit) noexcept {
  return static_cast<NalUnitType>(unit.front() & 0x1f);
}

}  // namespace vlm::platform::h264
