#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "platform/linux/media/libav.h"

namespace vlm::platform::h264 {

// H.264 in length-prefixed form into pictures. Every access unit gives its own picture at once, in
// the order of decoding: streams that reorder are not waited for. Used by one thread at a time.
//
// After damage nothing is shown until the next picture that needs no other, since what refers to a
// damaged picture looks no better.
class AvcDecoder {
 public:
  enum class Outcome {
    picture,
    nothing,  // no picture in the access unit, or one that can't be shown yet
    damaged,
  };

  // Null when no decoder can be made from these parameter sets.
  static std::unique_ptr<AvcDecoder> open(
      std::span<const std::span<const std::uint8_t>> parameterSets);

  Outcome decode(std::span<const std::uint8_t> accessUnit);
  // The picture of the last access unit whose outcome was one.
  const AVFrame& picture() const noexcept { return *picture_; }

 private:
  explicit AvcDecoder(media::AVCodecContextPtr context);

  bool send(std::span<const std::uint8_t> accessUnit);
  bool receive();
  static int recordBuffer(AVCodecContext* context, AVFrame* frame, int flags);

  const media::AVCodecContextPtr context_;
  const media::AVPacketPtr packet_;
  const media::AVFramePtr picture_;
  const media::AVFramePtr received_;
  // The buffer that the decoder asked for last, and how many it asked for, in this access unit.
  const media::AVFramePtr recorded_;
  int recordedCount_ = 0;
  std::vector<std::uint8_t> padded_;
  bool synchronised_ = false;
};

}  // namespace vlm::platform::h264
