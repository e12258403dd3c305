#include "support/private_sound_server.h"

#include <cstdlib>
#include <cstring>
#include <stdexcept>
#include <string_view>

namespace vlm::test {
namespace {

constexpr const char* kDevices[] = {
    // Without rewinds a sound reaches the monitor at once and not in seconds.
    "module-null-sink sink_name=spk rate=48000 format=float32le norewinds=1",
    "module-null-sink sink_name=micfeed rate=44100 format=float32le norewinds=1",
    "module-remap-source source_name=mic master=micfeed.monitor rate=44100 format=float32le"};

// What an earlier recorder left is no sign of life of the next.
std::string freshFile(const std::string& path) {
  std::filesystem::remove(path);
  return path;
}

}  // namespace

PrivateSoundServer::PrivateSoundServer() {
  home_.environment.set("PULSE_SERVER", "unix:" + file("pulse/native"));
  home_.environment.set("PIPEWIRE_REMOTE", "pipewire-0");
  std::filesystem::create_directory(file("pulse"));
  start();
}

bool PrivateSoundServer::isPipeWire() {
  const char* name = std::getenv("VLM_TEST_SOUND_SERVER");
  return name != nullptr && std::string_view(name) == "pipewire";
}

void PrivateSoundServer::kill() {
  while (!processes_.empty()) {
    process().end(SIGKILL);
    processes_.pop_back();
  }
}

void PrivateSoundServer::start() {
  kill();
  std::filesystem::remove(file("pulse/native"));
  if (isPipeWire()) {
    startPipeWire();
  } else {
    startPulseAudio();
  }
  if (!eventually([] { return runCommand({"pactl", "info"}).status == 0; })) {
    throw std::runtime_error("the sound server did not start");
  }
  for (const auto* module : kDevices) {
    outputOf({"sh", "-c", "exec pactl load-module " + std::string(module)});
  }
  const auto isReady = [] {
    return runCommand({"pactl", "set-default-sink", "spk"}).status == 0 &&
           runCommand({"pactl", "set-default-source", "mic"}).status == 0;
  };
  if (!eventually(isReady)) throw std::runtime_error("the sound server has no devices");
}

void PrivateSoundServer::startPulseAudio() {
  processes_.emplace_back(std::vector<std::string>{
      "pulseaudio", "-n", "--daemonize=no", "--log-level=0", "--exit-idle-time=-1",
      "--use-pid-file=false", "-L",
      "module-native-protocol-unix auth-anonymous=1 socket=" + file("pulse/native")});
}

void PrivateSoundServer::startPipeWire() {
  std::filesystem::remove(file("pipewire-0"));
  processes_.emplace_back(std::vector<std::string>{"pipewire"});
  if (!eventually([this] { return std::filesystem::exists(file("pipewire-0")); })) {
    throw std::runtime_error("PipeWire did not start");
  }
  for (const auto* name : {"wireplumber", "pipewire-pulse"}) {
    processes_.emplace_back(std::vector<std::string>{name});
  }
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
