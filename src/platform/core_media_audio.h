#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>

#include "platform/core_audio.h"
#include "platform/core_media.h"

namespace vlm::platform {

struct AudioStreamBasicDescription {
  double mSampleRate = 0;
  std::uint32_t mChannelsPerFrame = 0;
};

// Nothing for a description of anything but audio.
std::optional<AudioStreamBasicDescription> CMAudioFormatDescriptionGetStreamBasicDescription(
    const CMFormatDescription& description) noexcept;
// Frames, for audio.
std::int64_t CMSampleBufferGetNumSamples(const CMSampleBuffer& sample) noexcept;
// Describes the sample's audio: one buffer of interleaved samples or one for each channel. Writes
// the first `count` records of `list`; refuses when they don't fit. The memory lives as long as
// the reference in `block`.
OSStatus CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(CMSampleBuffer& sample,
                                                                 std::span<AudioBuffer> list,
                                                                 std::size_t& count,
                                                                 Ref<CMBlockBuffer>& block);

}  // namespace vlm::platform
