#pragma once

#include <memory>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/private_home.h"
#include "support/private_session_bus.h"

namespace vlm::test {

// A sound server of the test's own, which PULSE_SERVER names. It has one output, "spk", and one
// input, "mic", which gives what is played on the sink "micfeed", in 44,100 Hz stereo. Samples pass
// as they are. The environment may name PipeWire, with a session manager, in place of PulseAudio.
class PrivateSoundServer {
 public:
  PrivateSoundServer();
  ~PrivateSoundServer() { kill(); }

  static bool isPipeWire();

  // What serves the library.
  ChildProcess& process() { return processes_.back(); }
  // Ends it at once, as a crash would.
  void kill();
  void start();

  // A file in the server's folder.
  std::string file(const std::string& name) const { return home_.file(name); }

 private:
  void startPulseAudio();
  void startPipeWire();

  // That of the session manager.
  const std::unique_ptr<PrivateSessionBus> bus_ =
      isPipeWire() ? std::make_unique<PrivateSessionBus>() : nullptr;
  PrivateHome home_;
  std::vector<ChildProcess> processes_;  // in the order in which they start
};

// Interleaved floats.
using Samples = std::vector<float>;

// What a device gives, in stereo at 48 kHz, from the time this is made.
class SoundRecorder {
 public:
  SoundRecorder(const PrivateSoundServer& server, const std::string& source);
  // Ends it; all that came.
  Samples finish();

 private:
  std::string path_;
  ChildProcess recorder_;
};

}  // namespace vlm::test
