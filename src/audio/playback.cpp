#include "audio/playback.h"

#include <utility>

#include "audio/devices.h"

namespace vlm::audio {
namespace {

constexpr double kSampleRate = 48000;

}  // namespace

Playback::Playback(std::size_t channels)
    : engine_(platform::AVAudioEngine::make()), ring_(channels) {}

std::shared_ptr<Playback> Playback::start(const std::optional<std::string>& deviceUid,
                                          std::int32_t channels) {
  auto playback = std::make_shared<Playback>(channels >= 2 ? 2 : 1);
  return playback->startEngine(deviceUid) ? playback : nullptr;
}

bool Playback::startEngine(const std::optional<std::string>& deviceUid) {
  if (!engine_) return false;
  const auto format = platform::AVAudioFormat::initWithCommonFormat(
      platform::AVAudioCommonFormat::pcmFloat32, kSampleRate,
      static_cast<std::uint32_t>(ring_.channels()), false);
  if (!format) return false;
  source_ = platform::AVAudioSourceNode::initWithFormat(
      format,
      [weak = weak_from_this()](bool&, std::uint32_t sampleFrames,
                                platform::AudioBufferList buffers) -> platform::OSStatus {
        if (const auto self = weak.lock()) self->ring_.render(sampleFrames, buffers);
        return platform::noErr;
      });
  if (!source_) return false;
  engine_->attachNode(source_);
  if (engine_->connectToMainMixer(*source_, format)) return false;
  chooseDevice(engine_->outputNode().audioUnit(), findDevice(deviceUid, Direction::output));
  engine_->prepare();
  return !engine_->start();
}

}  // namespace vlm::audio
