#include "capture/audio_forwarding.h"

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "platform/core_media_audio.h"
#include "platform/integer.h"

namespace vlm::capture {
namespace {

using platform::AudioBuffer;
using platform::noErr;

struct Shape {
  std::int32_t sampleFrames;
  std::int32_t channels;
  std::int32_t sampleRate;
};

// One buffer a channel becomes sample frame after sample frame. A channel without samples stays
// silent; buffers beyond the channels of the format have no place in a sample frame.
std::vector<float> interleave(std::span<const AudioBuffer> buffers, const Shape& shape) {
  const auto sampleFrames = static_cast<std::size_t>(shape.sampleFrames);
  const auto channels = static_cast<std::size_t>(shape.channels);
  std::vector<float> block(sampleFrames * channels, 0.0F);
  for (std::size_t channel = 0; channel < std::min(buffers.size(), channels); ++channel) {
    const auto* samples = static_cast<const float*>(buffers[channel].mData);
    if (samples == nullptr) continue;
    for (std::size_t i = 0; i < sampleFrames; ++i) {
      block[i * channels + channel] = samples[i];
    }
  }
  return block;
}

}  // namespace

void forwardAudio(platform::CMSampleBuffer& sample, vlm_audio_cb audioCb, void* user) {
  const auto* format = platform::CMSampleBufferGetFormatDescription(sample);
  const auto description =
      format ? platform::CMAudioFormatDescriptionGetStreamBasicDescription(*format) : std::nullopt;
  if (!description) return;
  const Shape shape{static_cast<std::int32_t>(platform::CMSampleBufferGetNumSamples(sample)),
                    static_cast<std::int32_t>(description->mChannelsPerFrame),
                    std::max(0, platform::truncated<std::int32_t>(description->mSampleRate))};
  std::vector<AudioBuffer> list(std::size_t{description->mChannelsPerFrame} + 1);
  std::size_t count = 0;
  platform::Ref<platform::CMBlockBuffer> block;
  if (platform::CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(sample, list, count,
                                                                        block) != noErr) {
    return;
  }
  const auto deliver = [&](const float* samples) {
    audioCb(samples, shape.sampleFrames, shape.channels, shape.sampleRate, user);
  };
  if (count == 1) {
    const auto* samples = static_cast<const float*>(list.front().mData);
    if (samples != nullptr) deliver(samples);
  } else if (count > 1) {
    deliver(interleave(std::span(list).first(count), shape).data());
  }
}

}  // namespace vlm::capture
