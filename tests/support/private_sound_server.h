#pragma once

#include <optional>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/private_home.h"

namespace vlm::test {

// A sound server of the test's own, which PULSE_SERVER names. It has one output, "spk", and one
// input, "mic", which gives what is played on the sink "micfeed", in 44,100 Hz stereo. Samples pass
// as they are.
class PrivateSoundServer {
 public:
  PrivateSoundServer();
  ~PrivateSoundServer() { kill(); }

  ChildProcess& process() { return *server_; }
  // Ends it at once, as a crash would.
  void kill() { server_->end(SIGKILL); }
  void start();

  // A file in the server's folder.
  std::string file(const std::string& name) const { return home_.file(name); }

 private:
  PrivateHome home_;
  std::optional<ChildProcess> server_;
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
