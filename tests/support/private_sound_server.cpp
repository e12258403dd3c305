#include "support/private_sound_server.h"

#include <cstring>
#include <stdexcept>

namespace vlm::test {
namespace {

// What an earlier recorder left is no sign of life of the next.
std::string freshFile(const std::string& path) {
  std::filesystem::remove(path);
  return path;
}

}  // namespace

PrivateSoundServer::PrivateSoundServer() {
  home_.environment.set("PULSE_SERVER", "unix:" + file("sound"));
  start();
}

void PrivateSoundServer::start() {
  std::filesystem::remove(file("sound"));
  const std::string modules[] = {
      "module-native-protocol-unix auth-anonymous=1 socket=" + file("sound"),
      // Without rewinds a sound reaches the monitor at once and not in seconds.
      "module-null-sink sink_name=spk rate=48000 format=float32le norewinds=1",
      "module-null-sink sink_name=micfeed rate=44100 format=float32le norewinds=1",
      "module-remap-source source_name=mic master=micfeed.monitor rate=44100 format=float32le",
  };
  std::vector<std::string> command{"pulseaudio",          "-n",
                                   "--daemonize=no",      "--log-level=0",
                                   "--exit-idle-time=-1", "--use-pid-file=false"};
  for (const auto& module : modules) command.insert(command.end(), {"-L", module});
  server_.emplace(command);
  const auto isReady = [] {
    return runCommand({"pactl", "list", "short", "sources"}).output.find("\tmic\t") !=
           std::string::npos;
  };
  if (!eventually(isReady)) throw std::runtime_error("the sound server did not start");
  outputOf({"pactl", "set-default-sink", "spk"});
  outputOf({"pactl", "set-default-source", "mic"});
}

SoundRecorder::SoundRecorder(const PrivateSoundServer& server, const std::string& source)
    : path_(freshFile(server.file("recording-of-" + source))),
      recorder_({"sh", "-c",
                 "exec parec --device=\"$1\" --rate=48000 --channels=2 --format=float32le "
                 "--latency-msec=10 >\"$2\"",
                 "sh", source, path_}) {
  if (!eventually([this] { return !contentsOf(path_).empty(); })) {
    throw std::runtime_error("nothing is recorded");
  }
}

Samples SoundRecorder::finish() {
  recorder_.end();
  const auto bytes = contentsOf(path_);
  Samples samples(bytes.size() / sizeof(float));
  std::memcpy(samples.data(), bytes.data(), samples.size() * sizeof(float));
  return samples;
}

}  // namespace vlm::test
