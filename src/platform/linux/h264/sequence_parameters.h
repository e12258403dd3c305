#pragma once

#include <cstdint>
#include <optional>
#include <span>

namespace vlm::platform::h264 {

// What the decoder has to know of a sequence parameter set before libav sees it.
struct SequenceParameters {
  std::uint64_t widthInBlocks = 0;  // blocks of 16 by 16
  std::uint64_t heightInBlocks = 0;
  // Pictures may be missing on purpose, as when a sender leaves out a temporal layer.
  bool allowsGaps = false;

  // False for pictures larger than those of any level.
  bool isOfAnyLevel() const noexcept;
};

// Nothing when the set ends too early.
std::optional<SequenceParameters> readSequenceParameters(std::span<const std::uint8_t> set);

}  // namespace vlm::platform::h264
