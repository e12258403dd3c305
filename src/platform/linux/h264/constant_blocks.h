#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "platform/linux/h264/encoder_input.h"
#include "platform/portable/change_map.h"

namespace vlm::platform::h264 {

// Finds the macroblocks whose pixels are those of the picture that was encoded before, so that the
// encoder need not look at them. Blocks of which nothing is known count as changed.
class ConstantBlocks {
 public:
  // Prepares the flags for `source`, which came with `changes` (null when no account was kept).
  // The picture counts as encoded from then on; if that fails, forget() must follow.
  void update(const EncoderInput::Source& source, const ChangeMap* changes);
  void forget() { encodedSource_ = encodedPicture_ = 0; }

  // One flag a macroblock, rows from top to bottom; 1 for a constant one.
  std::span<std::uint8_t> flags() noexcept { return flags_; }

 private:
  void applyAccount(const ChangeMap& changes);
  void compare(const YCbCrPicture& picture, const YCbCrPicture& previous);

  std::vector<std::uint8_t> flags_;
  std::size_t columns_ = 0;
  // 0 when the last encoded picture belongs to no account.
  std::uint64_t encodedSource_ = 0;
  std::uint64_t encodedPicture_ = 0;
};

}  // namespace vlm::platform::h264
