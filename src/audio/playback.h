#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "audio/playback_ring.h"
#include "frame/handle.h"
#include "platform/avf_audio.h"

namespace vlm::audio {

// Plays what the host writes on one output device, through a ring.
class Playback final : public frame::HandleObject<Playback> {
 public:
  // Null when the engine can't be started.
  static std::shared_ptr<Playback> start(const std::optional<std::string>& deviceUid,
                                         std::int32_t channels);

  explicit Playback(std::size_t channels);

  // Interleaved; what does not fit is lost. Any thread.
  void write(std::span<const float> samples) { ring_.write(samples); }

  // Nothing is rendered after this.
  void stop() { engine_->stop(); }

 private:
  bool startEngine(const std::optional<std::string>& deviceUid);

  const std::shared_ptr<platform::AVAudioEngine> engine_;
  std::shared_ptr<platform::AVAudioSourceNode> source_;
  PlaybackRing ring_;
};

}  // namespace vlm::audio
