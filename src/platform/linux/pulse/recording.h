#pragma once

#include <atomic>
#include <memory>
#include <optional>
#include <string>

#include "platform/avf_audio.h"
#include "platform/linux/media/channel_places.h"
#include "platform/linux/pulse/connection.h"
#include "platform/linux/pulse/repeating_timer.h"

namespace vlm::platform::pulse {

// Who listens to a recording: it is given pieces of exactly so many frames.
struct Tap {
  std::uint32_t frames = 0;
  AVAudioFormat format;
  AVAudioNodeTapBlock block;
};

// What is recorded.
struct RecordingSource {
  std::string name;         // empty: the default device, and what becomes that
  pa_channel_map channels;  // the device's own
};

// A device being recorded, in interleaved pieces of the tap's size. When the server or the device
// goes, it is recorded again as soon as it is back. Everything but end() happens on the
// connection's thread. The tap's block may end the recording, which therefore outlives it.
class Recording : public std::enable_shared_from_this<Recording> {
 public:
  // Null when the server refuses.
  static std::shared_ptr<Recording> start(Connection& connection, const RecordingSource& source,
                                          const Tap& tap);
  Recording(Connection& connection, RecordingSource source, Tap tap);

  // No block begins after this, and none runs but the one that this is called from.
  void end();

 private:
  static void onState(pa_stream* stream, void* self);
  static void onMoved(pa_stream* stream, void* self);
  static void onReadable(pa_stream* stream, std::size_t bytes, void* self);
  static void onSource(pa_context* context, const pa_source_info* info, int last, void* self);
  bool start();
  void begin();
  void keepUp();
  void lookAtSource(const pa_source_info& source);
  void askForSourceOfStream();
  void read();
  void append(const float* samples, std::size_t frames);
  void handOver();

  Connection& connection_;
  const RecordingSource source_;
  const media::ChannelPlaces places_;
  const Tap tap_;
  std::shared_ptr<AVAudioPCMBuffer> filling_;
  // Set before the lock is asked for: the connection's thread, which is in blocks without a pause
  // when they last longer than what they get, then comes out of them.
  std::atomic<bool> isEnding_ = false;
  // Under the connection's lock.
  Stream stream_;
  // What the stream records is known to be a microphone. The server moves a stream to the monitor
  // of an output when nothing else is left: nobody said that what the machine plays may be heard.
  bool isMicrophone_ = false;
  Operation question_;
  std::optional<RepeatingTimer> timer_;
};

}  // namespace vlm::platform::pulse
