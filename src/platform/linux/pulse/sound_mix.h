#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "platform/linux/pulse/connection.h"
#include "platform/linux/pulse/voice.h"

namespace vlm::platform::pulse {

// The sounds of one rate and number of channels that play at a time, in one stream to the server,
// which mixes only some tens of streams and keeps the others waiting. The stream ends with the last
// of them. A voice is used through the mixture alone while it plays, and stopped before it goes.
class SoundMix {
 public:
  // The one for sounds like this; null without a server.
  static std::shared_ptr<SoundMix> of(const Sound& sound);
  explicit SoundMix(std::shared_ptr<Connection> connection) : connection_(std::move(connection)) {}
  ~SoundMix();
  SoundMix(const SoundMix&) = delete;
  SoundMix& operator=(const SoundMix&) = delete;

  // From a frame of its sound. False when the server refuses.
  bool play(Voice& voice, std::size_t frame);
  void stop(Voice& voice);
  // False when its end has been heard, or the server is gone.
  bool isPlaying(const Voice& voice) const;
  // The frame of the voice's sound that is heard now; 0 when the end has been heard.
  std::size_t position(const Voice& voice) const;
  // False for a voice that does not play.
  bool moveTo(Voice& voice, std::size_t frame);
  void setVolume(Voice& voice, float volume);
  void setLoops(Voice& voice, std::int64_t loops);

 private:
  static void onWritable(pa_stream* stream, std::size_t bytes, void* self);
  static void onDrained(pa_stream* stream, int success, void* self);
  void begin(const Sound& sound);
  void goOn();
  void write(std::size_t bytes);
  std::size_t writePiece(std::size_t bytes);
  std::size_t mixInto(std::span<float> piece);
  void drain();
  bool has(const Voice& voice) const;
  std::uint64_t heard() const;
  void forgetHeard(std::uint64_t heard);

  const std::shared_ptr<Connection> connection_;
  // Under the connection's lock.
  std::vector<Voice*> voices_;  // whose end has not been heard
  Stream stream_;
  std::uint64_t written_ = 0;  // frames
  bool isDraining_ = false;
  std::uint64_t drainedUpTo_ = 0;
};

}  // namespace vlm::platform::pulse
