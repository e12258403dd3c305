#pragma once

#import <AVFAudio/AVFAudio.h>

#include "platform/avf_audio.h"
#include "platform/macos/bridge/objc.h"

namespace vlm::platform::bridge {

// Null where the framework has no such format.
Objc<::AVAudioFormat> toNative(const AVAudioFormat& format);
AVAudioFormat fromNative(::AVAudioFormat* format);

// The framework's buffer. Every AVAudioPCMBuffer is one.
class PcmBuffer : public AVAudioPCMBuffer {
 public:
  explicit PcmBuffer(Objc<::AVAudioPCMBuffer> buffer);

  const AVAudioFormat& format() const override { return format_; }
  std::uint32_t frameCapacity() const override { return [buffer_.get() frameCapacity]; }
  std::uint32_t frameLength() const override { return [buffer_.get() frameLength]; }
  void setFrameLength(std::uint32_t frames) override;
  float* floatChannelData(std::uint32_t channel) override;

  ::AVAudioPCMBuffer* native() const { return buffer_.get(); }

 private:
  const Objc<::AVAudioPCMBuffer> buffer_;
  const AVAudioFormat format_;
};

}  // namespace vlm::platform::bridge
