#include "platform/portable/audio_format.h"

namespace vlm::platform {
namespace {

class PcmFormat final : public AVAudioFormat {
 public:
  explicit PcmFormat(const PcmShape& shape) : shape_(shape) {}
  AVAudioCommonFormat commonFormat() const override { return shape_.commonFormat; }
  double sampleRate() const override { return shape_.sampleRate; }
  std::uint32_t channelCount() const override { return shape_.channelCount; }
  bool isInterleaved() const override { return shape_.interleaved; }

 private:
  const PcmShape shape_;
};

}  // namespace

PcmShape shapeOf(const AVAudioFormat& format) {
  return {format.commonFormat(), format.sampleRate(), format.channelCount(),
          format.isInterleaved()};
}

AVAudioFormatPtr makeAudioFormat(const PcmShape& shape) {
  return std::make_shared<PcmFormat>(shape);
}

AVAudioFormatPtr AVAudioFormat::initWithCommonFormat(AVAudioCommonFormat format, double sampleRate,
                                                     std::uint32_t channels, bool interleaved) {
  if (channels > 2) return nullptr;
  return makeAudioFormat({format, sampleRate, channels, interleaved});
}

}  // namespace vlm::platform
