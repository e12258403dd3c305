#pragma once

#import <AVFAudio/AVFAudio.h>

#include <memory>
#include <utility>

#include "platform/avf_audio.h"
#include "platform/macos/bridge/objc.h"

namespace vlm::platform::bridge {

// The framework's format. Every AVAudioFormat is one.
class Format : public AVAudioFormat {
 public:
  explicit Format(Objc<::AVAudioFormat> format) : format_(std::move(format)) {}
  AVAudioCommonFormat commonFormat() const override;
  double sampleRate() const override { return [format_.get() sampleRate]; }
  std::uint32_t channelCount() const override { return [format_.get() channelCount]; }
  bool isInterleaved() const override { return [format_.get() isInterleaved]; }

  ::AVAudioFormat* native() const { return format_.get(); }

 private:
  const Objc<::AVAudioFormat> format_;
};

// Nil for null.
::AVAudioFormat* native(const AVAudioFormatPtr& format);
// Null for nil.
AVAudioFormatPtr fromNative(::AVAudioFormat* format);

// The framework's buffer. Every AVAudioPCMBuffer is one.
class PcmBuffer : public AVAudioPCMBuffer {
 public:
  explicit PcmBuffer(Objc<::AVAudioPCMBuffer> buffer);

  const AVAudioFormat& format() const override { return *format_; }
  std::uint32_t frameCapacity() const override { return [buffer_.get() frameCapacity]; }
  std::uint32_t frameLength() const override { return [buffer_.get() frameLength]; }
  void setFrameLength(std::uint32_t frames) override;
  float* floatChannelData(std::uint32_t channel) override;

  ::AVAudioPCMBuffer* native() const { return buffer_.get(); }

 private:
  const Objc<::AVAudioPCMBuffer> buffer_;
  const AVAudioFormatPtr format_;
};

}  // namespace vlm::platform::bridge
