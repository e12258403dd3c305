#include "audio/sound_effect.h"

#include <algorithm>

namespace vlm::audio {
namespace {

// Written so that what is not a number is full volume, like anything that is not below it.
float clampedVolume(double volume) {
  if (!(volume < 1.0)) return 1.0F;
  return static_cast<float>(std::max(volume, 0.0));
}

}  // namespace

std::shared_ptr<SoundEffect> SoundEffect::open(const std::string& path) {
  auto player = platform::helpers::audioPlayerOfFile(path);
  if (!player) return nullptr;
  player->prepareToPlay();
  return std::make_shared<SoundEffect>(std::move(player));
}

void SoundEffect::play(double volume, std::int32_t loops) {
  player_->setVolume(clampedVolume(volume));
  player_->setNumberOfLoops(std::max(loops, -1));
  player_->setCurrentTime(0);
  player_->play();
}

void SoundEffect::playFrom(double startSeconds, double volume) {
  player_->setVolume(clampedVolume(volume));
  player_->setNumberOfLoops(0);
  player_->setCurrentTime(withinFile(startSeconds));
  player_->play();
}

void SoundEffect::seek(double seconds) {
  player_->setCurrentTime(withinFile(seconds));
  if (!player_->isPlaying()) player_->play();
}

double SoundEffect::withinFile(double seconds) const {
  return std::max(std::min(seconds, player_->duration()), 0.0);
}

}  // namespace vlm::audio
