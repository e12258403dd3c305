#pragma once

#include <cstdint>
#include <span>

#include "platform/linux/h264/encoder_input.h"

namespace vlm::platform::h264 {

// A picture that is new only in part: where a block is constant it shows what decoders show
// already. An encoder that is given it finds nothing to code there, at any quantiser.
class HeldPicture {
 public:
  // Valid until the next call; null when memory is short.
  const YCbCrPicture* compose(const YCbCrPicture& source, const YCbCrPicture& shown,
                              std::span<const std::uint8_t> constant);

 private:
  Ref<CVPixelBuffer> memory_;
  YCbCrPicture picture_{};
};

}  // namespace vlm::platform::h264
