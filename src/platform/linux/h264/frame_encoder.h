#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>

#include "platform/core_media.h"
#include "platform/linux/h264/compression_settings.h"
#include "platform/linux/h264/constant_blocks.h"
#include "platform/linux/h264/encoder_input.h"
#include "platform/linux/h264/held_picture.h"
#include "platform/linux/h264/quantiser_control.h"
#include "platform/linux/h264/x264_encoder.h"

namespace vlm::platform::h264 {

// Turns pixel buffers into samples, one after the other: decides on key frames and quantisers and
// keeps the x264 stream. Used by one thread at a time.
class FrameEncoder {
 public:
  // The size of the pixel buffers that will come.
  FrameEncoder(std::size_t width, std::size_t height, bool lowLatency);

  // Makes the stream before the first frame needs it.
  void prepare(const CompressionSettings& settings);

  struct Frame {
    Ref<CVPixelBuffer> image;
    CMTime presentationTimeStamp;
    bool forceKeyFrame;
  };
  // `sample` is written only when the status is noErr.
  OSStatus encode(const Frame& frame, const CompressionSettings& settings,
                  Ref<CMSampleBuffer>& sample);

 private:
  // `mayRaiseLevel`: a key frame is due, which can bring new parameter sets.
  bool openStream(const media::YCbCrEncoding& encoding, const CompressionSettings& settings,
                  bool mayRaiseLevel);
  bool keyFrameIsDue(const Frame& frame, const CompressionSettings& settings) const;
  OSStatus encodeLocked(const Frame& frame, const CompressionSettings& settings,
                        Ref<CMSampleBuffer>& sample);

  const std::size_t width_;
  const std::size_t height_;
  QuantiserControl quantisers_;
  EncoderInput input_;
  ConstantBlocks blocks_;
  HeldPicture held_;
  std::unique_ptr<X264Encoder> stream_;
  Ref<CMFormatDescription> description_;
  // Counted and timed from the last key frame; negative when the next frame has to be one.
  std::int64_t framesSinceKey_ = -1;
  double keyFrameSeconds_ = 0;
};

}  // namespace vlm::platform::h264
