#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "frame/handle.h"
#include "platform/avf_audio.h"

namespace vlm::audio {

// One sound file behind a handle; the player does the work. Used by one thread at a time.
class SoundEffect final : public frame::HandleObject<SoundEffect> {
 public:
  // Null for a file that can't be played.
  static std::shared_ptr<SoundEffect> open(const std::string& path);

  explicit SoundEffect(std::shared_ptr<platform::AVAudioPlayer> player)
      : player_(std::move(player)) {}

  // From the beginning, `loops` times more; endlessly for a negative number.
  void play(double volume, std::int32_t loops);
  // Once, from a place within the file.
  void playFrom(double startSeconds, double volume);
  // Goes on from there, or starts there.
  void seek(double seconds);
  void stop() { player_->stop(); }

  double position() const { return player_->currentTime(); }
  double duration() const { return player_->duration(); }
  bool isPlaying() const { return player_->isPlaying(); }

 private:
  double withinFile(double seconds) const;

  const std::shared_ptr<platform::AVAudioPlayer> player_;
};

}  // namespace vlm::audio
