#pragma once

#include <cstdint>

#include "platform/avf_audio.h"

namespace vlm::platform {

// What a format says, as values.
struct PcmShape {
  AVAudioCommonFormat commonFormat = AVAudioCommonFormat::pcmFloat32;
  double sampleRate = 0;
  std::uint32_t channelCount = 0;
  bool interleaved = false;
  friend bool operator==(const PcmShape&, const PcmShape&) = default;
};

PcmShape shapeOf(const AVAudioFormat& format);

// Of any shape, as a device may have it.
AVAudioFormatPtr makeAudioFormat(const PcmShape& shape);

}  // namespace vlm::platform
