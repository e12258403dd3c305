#include "audio/microphone.h"

#include <utility>

#include "audio/devices.h"
#include "frame/guard.h"

namespace vlm::audio {
namespace {

using platform::AVAudioPCMBuffer;

constexpr std::uint32_t kBus = 0;
// 20 ms of a device at 48 kHz.
constexpr std::uint32_t kTapFrames = 960;
// Sample frames that a converter may give beyond the ratio of the rates, from what it kept back
// before.
constexpr std::uint32_t kHeadroomFrames = 64;
constexpr double kOutRate = 48000;

}  // namespace

MicCapture::MicCapture(vlm_mic_cb cb, void* user)
    : engine_(platform::AVAudioEngine::make()),
      outFormat_(platform::AVAudioFormat::initWithCommonFormat(
          platform::AVAudioCommonFormat::pcmFloat32, kOutRate, 1, true)),
      cb_(cb),
      user_(user) {}

std::shared_ptr<MicCapture> MicCapture::start(const std::optional<std::string>& deviceUid,
                                              vlm_mic_cb cb, void* user) {
  auto capture = std::make_shared<MicCapture>(cb, user);
  return capture->startEngine(deviceUid) ? capture : nullptr;
}

bool MicCapture::startEngine(const std::optional<std::string>& deviceUid) {
  if (!engine_ || !outFormat_) return false;
  auto& input = engine_->inputNode();
  // Before the format is read, which is the chosen device's then.
  chooseDevice(input.audioUnit(), findDevice(deviceUid, Direction::input));
  const auto format = input.inputFormatForBus(kBus);
  if (!format || !(format->sampleRate() > 0) || format->channelCount() == 0) return false;
  converter_ = platform::AVAudioConverter::initFromFormat(format, outFormat_);
  const auto block = [weak = weak_from_this()](const std::shared_ptr<AVAudioPCMBuffer>& buffer) {
    if (const auto self = weak.lock()) frame::guarded([&] { self->delivery(buffer); });
  };
  if (input.installTapOnBus(kBus, kTapFrames, format, block)) return false;
  engine_->prepare();
  return !engine_->start();
}

void MicCapture::delivery(const std::shared_ptr<AVAudioPCMBuffer>& tapped) const {
  if (!converter_) return;
  const double ratio = kOutRate / tapped->format().sampleRate();
  const auto expected = static_cast<std::uint32_t>(tapped->frameLength() * ratio);
  const auto output = AVAudioPCMBuffer::initWithPCMFormat(outFormat_, expected + kHeadroomFrames);
  if (!output) return;
  // Never the end of the stream: what the converter keeps back comes with the next buffer.
  const auto once = [next = tapped](platform::AVAudioConverterInputStatus& status) mutable {
    status = next ? platform::AVAudioConverterInputStatus::haveData
                  : platform::AVAudioConverterInputStatus::noDataNow;
    return std::exchange(next, nullptr);
  };
  if (converter_->convertToBuffer(*output, once)) return;
  const float* samples = output->floatChannelData(0);
  if (output->frameLength() == 0 || samples == nullptr) return;
  cb_(samples, static_cast<std::int32_t>(output->frameLength()), user_);
}

void MicCapture::stop() {
  engine_->inputNode().removeTapOnBus(kBus);
  engine_->stop();
}

}  // namespace vlm::audio
