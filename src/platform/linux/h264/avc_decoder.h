#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "platform/linux/h264/access_unit.h"
#include "platform/linux/media/libav.h"

namespace vlm::platform::h264 {

// H.264 in length-prefixed form into pictures. Every access unit gives its own picture at once, in
// the order of decoding: streams that reorder are not waited for. Used by one thread at a time.
//
// After damage nothing is shown until the next IDR picture, since what refers to a damaged picture
// looks no better. A stream that is joined in its middle is shown from its first intra picture on:
// the message that makes one a recovery point does not reach the decoder.
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
  // Whether the pictures before the current one are there that it may need.
  enum class Sync {
    none,
    joined,  // but for the B pictures right behind the intra picture that the stream began with
    whole,
  };

  AvcDecoder(media::AVCodecContextPtr context, bool allowsGaps);

  bool send(std::span<const std::uint8_t> accessUnit);
  bool receive();
  bool hasMadeUpParts(bool received) const;
  bool synchronise(const AccessUnitFacts& facts);
  static int recordBuffer(AVCodecContext* context, AVFrame* frame, int flags);

  const media::AVCodecContextPtr context_;
  const bool allowsGaps_;
  const media::AVPacketPtr packet_;
  const media::AVFramePtr picture_;
  const media::AVFramePtr received_;
  // The buffer that the decoder asked for last, and how many it asked for, in this access unit.
  const media::AVFramePtr recorded_;
  int recordedCount_ = 0;
  std::vector<std::uint8_t> padded_;
  const AVFrame* decodersFrame_ = nullptr;  // the decoder's own, in which recorded_ was
  Sync sync_ = Sync::none;
  bool seenIdr_ = false;
};

}  // namespace vlm::platform::h264
