#include <algorithm>
#include <utility>
#include <vector>

#include "platform/avf_audio.h"

namespace vlm::platform {
namespace {

class FloatBuffer final : public AVAudioPCMBuffer {
 public:
  FloatBuffer(AVAudioFormatPtr format, std::uint32_t frameCapacity)
      : format_(std::move(format)),
        frameCapacity_(frameCapacity),
        samples_(std::size_t{frameCapacity} * format_->channelCount()) {}

  const AVAudioFormat& format() const override { return *format_; }
  std::uint32_t frameCapacity() const override { return frameCapacity_; }
  std::uint32_t frameLength() const override { return frameLength_; }
  void setFrameLength(std::uint32_t frames) override {
    frameLength_ = std::min(frames, frameCapacity_);
  }
  float* floatChannelData(std::uint32_t channel) override {
    if (channel >= format_->channelCount()) return nullptr;
    const std::size_t step = format_->isInterleaved() ? 1 : frameCapacity_;
    return samples_.data() + channel * step;
  }

 private:
  const AVAudioFormatPtr format_;
  const std::uint32_t frameCapacity_;
  std::uint32_t frameLength_ = 0;
  std::vector<float> samples_;
};

}  // namespace

std::shared_ptr<AVAudioPCMBuffer> AVAudioPCMBuffer::initWithPCMFormat(AVAudioFormatPtr format,
                                                                      std::uint32_t frameCapacity) {
  if (!format || format->commonFormat() != AVAudioCommonFormat::pcmFloat32 ||
      format->channelCount() == 0) {
    return nullptr;
  }
  return std::make_shared<FloatBuffer>(std::move(format), frameCapacity);
}

}  // namespace vlm::platform
