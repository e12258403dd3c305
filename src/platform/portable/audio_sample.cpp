#include <algorithm>
#include <cstring>
#include <utility>

#include "platform/portable/fallible.h"
#include "platform/portable/media.h"

namespace vlm::platform {
namespace {

constexpr OSStatus kCMSampleBufferError_ArrayTooSmall = -12737;

}  // namespace

std::optional<AudioStreamBasicDescription> CMAudioFormatDescriptionGetStreamBasicDescription(
    const CMFormatDescription& description) noexcept {
  return description.audio;
}

std::int64_t CMSampleBufferGetNumSamples(const CMSampleBuffer& sample) noexcept {
  return sample.frames;
}

OSStatus portable::audioBufferList(CMSampleBuffer& sample, std::span<AudioBuffer> list,
                                   std::size_t& count, Ref<CMBlockBuffer>& block) {
  if (sample.audio.size() > list.size()) return kCMSampleBufferError_ArrayTooSmall;
  std::ranges::copy(sample.audio, list.begin());
  count = sample.audio.size();
  block = sample.data;
  return noErr;
}

Ref<CMSampleBuffer> makeAudioSample(std::span<const float> samples,
                                    const AudioStreamBasicDescription& format, CMTime time) {
  auto description = makeRef<CMFormatDescription>();
  description->audio = format;
  CMBlockBuffer::Piece bytes(samples.size_bytes());
  std::memcpy(bytes.data(), samples.data(), bytes.size());
  auto block = makeRef<CMBlockBuffer>(std::vector<CMBlockBuffer::Piece>{});
  block->pieces.push_back(std::move(bytes));

  auto sample = makeRef<CMSampleBuffer>();
  auto& memory = block->pieces.front();
  sample->audio = {
      {format.mChannelsPerFrame, static_cast<std::uint32_t>(memory.size()), memory.data()}};
  sample->frames = static_cast<std::int64_t>(samples.size() / format.mChannelsPerFrame);
  sample->timing.presentationTimeStamp = time;
  sample->description = std::move(description);
  sample->data = std::move(block);
  return sample;
}

}  // namespace vlm::platform
