#include "platform/macos/bridge/audio_buffer.h"

#include <algorithm>
#include <utility>

#include "platform/macos/bridge/guard.h"

namespace vlm::platform::bridge {

namespace {

static_assert(static_cast<int>(AVAudioCommonFormat::other) == ::AVAudioOtherFormat);
static_assert(static_cast<int>(AVAudioCommonFormat::pcmFloat32) == ::AVAudioPCMFormatFloat32);

// The framework makes formats of more channels only with a layout. Ours have no places: the
// channels are counted.
constexpr std::uint32_t kMostChannelsWithoutLayout = 2;

}  // namespace

Objc<::AVAudioFormat> toNative(const AVAudioFormat& format) {
  const auto common = static_cast<::AVAudioCommonFormat>(format.commonFormat);
  Objc<::AVAudioFormat> native;
  guarded([&] {
    if (format.channelCount <= kMostChannelsWithoutLayout) {
      native = Objc<::AVAudioFormat>::adopting([[::AVAudioFormat alloc]
          initWithCommonFormat:common
                    sampleRate:format.sampleRate
                      channels:format.channelCount
                   interleaved:format.interleaved]);
      return;
    }
    const auto layout = Objc<AVAudioChannelLayout>::adopting([[AVAudioChannelLayout alloc]
        initWithLayoutTag:(::kAudioChannelLayoutTag_DiscreteInOrder | format.channelCount)]);
    native = Objc<::AVAudioFormat>::adopting([[::AVAudioFormat alloc]
        initWithCommonFormat:common
                  sampleRate:format.sampleRate
                 interleaved:format.interleaved
               channelLayout:layout.get()]);
  });
  return native;
}

AVAudioFormat fromNative(::AVAudioFormat* format) {
  const bool isFloat = format.commonFormat == ::AVAudioPCMFormatFloat32;
  return {isFloat ? AVAudioCommonFormat::pcmFloat32 : AVAudioCommonFormat::other,
          format.sampleRate, format.channelCount, static_cast<bool>(format.isInterleaved)};
}

PcmBuffer::PcmBuffer(Objc<::AVAudioPCMBuffer> buffer)
    : buffer_(std::move(buffer)), format_(fromNative([buffer_.get() format])) {}

// The framework throws for more frames than there is room for.
void PcmBuffer::setFrameLength(std::uint32_t frames) {
  [buffer_.get() setFrameLength:std::min(frames, frameCapacity())];
}

float* PcmBuffer::floatChannelData(std::uint32_t channel) {
  float* const* const channels = [buffer_.get() floatChannelData];
  return channels == nullptr || channel >= format_.channelCount ? nullptr : channels[channel];
}

}  // namespace vlm::platform::bridge
