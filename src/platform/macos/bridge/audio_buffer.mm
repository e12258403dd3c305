#include "platform/macos/bridge/audio_buffer.h"

#include <algorithm>
#include <utility>

namespace vlm::platform::bridge {

namespace {

static_assert(static_cast<int>(AVAudioCommonFormat::other) == ::AVAudioOtherFormat);
static_assert(static_cast<int>(AVAudioCommonFormat::pcmFloat32) == ::AVAudioPCMFormatFloat32);

}  // namespace

AVAudioCommonFormat Format::commonFormat() const {
  const bool isFloat = [format_.get() commonFormat] == ::AVAudioPCMFormatFloat32;
  return isFloat ? AVAudioCommonFormat::pcmFloat32 : AVAudioCommonFormat::other;
}

::AVAudioFormat* native(const AVAudioFormatPtr& format) {
  return format == nullptr ? nil : static_cast<const Format&>(*format).native();
}

AVAudioFormatPtr fromNative(::AVAudioFormat* format) {
  if (format == nil) return nullptr;
  return std::make_shared<Format>(Objc<::AVAudioFormat>::retaining(format));
}

PcmBuffer::PcmBuffer(Objc<::AVAudioPCMBuffer> buffer)
    : buffer_(std::move(buffer)), format_(fromNative([buffer_.get() format])) {}

// The framework throws for more frames than there is room for.
void PcmBuffer::setFrameLength(std::uint32_t frames) {
  [buffer_.get() setFrameLength:std::min(frames, frameCapacity())];
}

float* PcmBuffer::floatChannelData(std::uint32_t channel) {
  float* const* const channels = [buffer_.get() floatChannelData];
  return channels == nullptr || channel >= format_->channelCount() ? nullptr : channels[channel];
}

}  // namespace vlm::platform::bridge
