#pragma once

#include <memory>
#include <string>

#include "platform/avf_audio.h"
#include "platform/linux/pulse/connection.h"

namespace vlm::platform::pulse {

// Who listens to a recording: it is given pieces of exactly so many frames.
struct Tap {
  std::uint32_t frames = 0;
  AVAudioFormatPtr format;
  AVAudioNodeTapBlock block;
};

// What is recorded.
struct RecordingSource {
  std::string name;         // empty: the default device, and what becomes that
  pa_channel_map channels;  // the device's own
};

// A device being recorded, in interleaved pieces of the tap's size. Everything but end() happens on
// the connection's thread. The tap's block may end the recording, which therefore outlives it.
class Recording : public std::enable_shared_from_this<Recording> {
 public:
  // Null when the server refuses.
  static std::shared_ptr<Recording> start(Connection& connection, const RecordingSource& source,
                                          const Tap& tap);
  Recording(Connection& connection, Tap tap);

  // No block begins after this, and none runs but the one that this is called from.
  void end();

 private:
  static void onReadable(pa_stream* stream, std::size_t bytes, void* self);
  bool connect(const RecordingSource& source);
  void read();
  void append(const float* samples, std::size_t frames);
  void handOver();

  Connection& connection_;
  const Tap tap_;
  std::shared_ptr<AVAudioPCMBuffer> filling_;
  Stream stream_;
};

}  // namespace vlm::platform::pulse
