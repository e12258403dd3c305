#include "platform/linux/pulse/player.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/integer.h"
#include "platform/linux/pulse/sound_mix.h"

namespace vlm::platform::pulse {
namespace {

class Player final : public AVAudioPlayer {
 public:
  explicit Player(Sound sound) : sound_(std::move(sound)) {}
  ~Player() override { stop(); }

  // The sound is in memory already.
  bool prepareToPlay() override { return true; }

  bool play() override {
    if (isPlaying()) return true;
    stop();
    mix_ = SoundMix::of(sound_);
    if (!mix_) return false;
    voice_.setVolume(volume_);
    voice_.setLoops(loops_);
    if (mix_->play(voice_, frame_)) return true;
    mix_->stop(voice_);
    mix_ = nullptr;
    return false;
  }

  void stop() override {
    if (!mix_) return;
    frame_ = mix_->position(voice_);
    mix_->stop(voice_);
    mix_ = nullptr;
  }

  void setVolume(float volume) override {
    volume_ = volume;
    if (mix_) mix_->setVolume(voice_, volume);
  }

  void setNumberOfLoops(std::int64_t loops) override {
    loops_ = loops;
    if (mix_) mix_->setLoops(voice_, loops);
  }

  double currentTime() override {
    return static_cast<double>(mix_ ? mix_->position(voice_) : frame_) / sound_.sampleRate;
  }

  void setCurrentTime(double seconds) override {
    const auto frame = truncated<std::size_t>(std::round(seconds * sound_.sampleRate));
    const auto place = std::min(frame, sound_.frames());
    if (mix_ && !mix_->moveTo(voice_, place)) stop();
    frame_ = place;
  }

  double duration() override { return static_cast<double>(sound_.frames()) / sound_.sampleRate; }

  bool isPlaying() override { return mix_ && mix_->isPlaying(voice_); }

 private:
  const Sound sound_;
  float volume_ = 1;
  std::int64_t loops_ = 0;
  std::size_t frame_ = 0;  // where it begins when it plays again
  // Through which the sound was played last; null when it has been stopped.
  std::shared_ptr<SoundMix> mix_;
  Voice voice_{sound_};
};

}  // namespace

std::shared_ptr<AVAudioPlayer> makePlayer(Sound sound) {
  return std::make_shared<Player>(std::move(sound));
}

}  // namespace vlm::platform::pulse
