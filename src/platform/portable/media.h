#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <vector>

#include "platform/core_media_audio.h"
#include "platform/portable/object.h"
#include "platform/portable/pixel_buffer.h"

namespace vlm::platform {

class CMBlockBuffer : public Object {
 public:
  using Piece = std::vector<std::uint8_t>;
  explicit CMBlockBuffer(std::vector<Piece> content) : pieces(std::move(content)) {}

  std::vector<Piece> pieces;
};

class CMFormatDescription : public Object {
 public:
  // Whole NAL units, sequence sets first; empty for a description of an image. A set that is
  // absent is counted but can't be read.
  std::vector<std::optional<std::vector<std::uint8_t>>> parameterSets;
  std::size_t width = 0;
  std::size_t height = 0;
  std::optional<AudioStreamBasicDescription> audio;
};

class CMSampleBuffer : public Object {
 public:
  bool valid = true;
  Ref<CMBlockBuffer> data;
  Ref<CVPixelBuffer> image;
  // Of a sample of audio: the frames, and where in the data they lie.
  std::int64_t frames = 0;
  std::vector<AudioBuffer> audio;
  Ref<CMFormatDescription> description;
  CMSampleTimingInfo timing;
  // The array of attachment dictionaries; null until it is made.
  std::optional<CFValue> attachments;
  // False for a sample whose attachments can't be made when they are missing.
  bool attachable = true;
};

// A sample of interleaved audio in one buffer.
Ref<CMSampleBuffer> makeAudioSample(std::span<const float> samples,
                                    const AudioStreamBasicDescription& format, CMTime time);

}  // namespace vlm::platform
