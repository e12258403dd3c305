// The devices of a sound server, and what happens when it goes away.
#include "e2e/sounds.h"
#include "support/private_desktop.h"

namespace vlm::test {
namespace {

nlohmann::json devicesOf(std::int32_t input) {
  const auto size = -vlm_audio_devices_json(input, nullptr, 0);
  std::string text(static_cast<std::size_t>(size), '.');
  EXPECT_EQ(vlm_audio_devices_json(input, text.data(), size), size - 1);
  return nlohmann::json::parse(text.substr(0, text.size() - 1));
}

std::string escaped(const std::string& text) {
  std::string result;
  for (const char letter : text) {
    if (std::string_view("\"'\\").find(letter) != std::string_view::npos) result += '\\';
    result += letter;
  }
  return result;
}

TEST(Devices, AreThoseThatPactlLists) {
  if (PrivateSoundServer::isPipeWire()) GTEST_SKIP() << "PipeWire keeps the backslashes of names";
  PrivateSoundServer server;
  const std::string names[] = {"Plain", "Quotes \"twice\" and 'once'", "Back\\slash\\",
                               "Tab\tbell\alines\n", "Ünï ☂ 🎧"};
  int number = 0;
  for (const auto& name : names) {
    outputOf({"pactl", "load-module", "module-null-sink",
              "sink_name=odd" + std::to_string(number++),
              "sink_properties='device.description=\"" + escaped(name) + "\"'"});
  }
  const auto sinks = devicesOf(0);
  ASSERT_EQ(sinks.size(), std::size(names) + 2);
  EXPECT_EQ(timesListed("sinks", "Sink #"), sinks.size());
  for (std::size_t i = 0; i < std::size(names); ++i) EXPECT_EQ(sinks[i + 2]["name"], names[i]);
  const auto sources = devicesOf(1);
  EXPECT_EQ(timesListed("sources", "Monitor of Sink: n/a"), sources.size());
  ASSERT_EQ(sources.size(), 1U) << "monitors are no microphones";
  EXPECT_EQ(sources[0]["uid"], "mic");
  for (const auto& [kind, devices] : {std::pair{"sinks", sinks}, {"sources", sources}}) {
    for (const auto& device : devices) {
      const auto name = device["name"].get<std::string>();
      const auto uid = device["uid"].get<std::string>();
      EXPECT_EQ(timesListed(kind, "Name: " + uid + "\n\tDescription: " + name + "\n"), 1U) << uid;
    }
  }
  server.kill();
  char out[3];
  EXPECT_EQ(vlm_audio_devices_json(0, out, 3), 2) << "no server, no devices";
}

// A host that plays what it hears on the way through, and what happens to it.
void loseAndFind(const std::function<void(PrivateSoundServer&)>& lose,
                 const std::function<void(PrivateSoundServer&)>& bringBack, const char* output,
                 const char* input) {
  PrivateSoundServer server;
  Microphone heard;
  void* microphone = vlm_audio_in_start(input, Microphone::onSamples, &heard);
  void* playback = vlm_audio_out_start(output, 2);
  ASSERT_TRUE(microphone && playback);
  std::atomic<bool> ends = false;
  std::thread talking([&] {
    const auto tone = sine(1, {1000, 1000}, 0.5);
    for (auto due = std::chrono::steady_clock::now(); !ends; due += milliseconds(20)) {
      std::this_thread::sleep_until(due);
      vlm_audio_out_write(playback, tone.data(), 2 * 960);
    }
  });
  lose(server);
  sleepFor(milliseconds(1500));
  EXPECT_TRUE(heardIn(heard, milliseconds(100)).empty());
  bringBack(server);
  EXPECT_TRUE(eventually([] { return sinksOfStreams() == std::vector<std::string>{"spk"}; }));
  EXPECT_TRUE(eventually([&] { return !heardIn(heard, milliseconds(100)).empty(); }));
  const ChildProcess speaker(
      {"paplay", "--device=micfeed", soundFile(server, "tone.wav", sine(3, {997, 997}, 0.5))});
  sleepFor(milliseconds(500));
  EXPECT_GT(toneIn(heardIn(heard, milliseconds(500)), 1, 0, 997).loudest, 0.4);
  // Nothing has piled up: what plays ends soon after the last write.
  SoundRecorder recorder(server, "spk.monitor");
  sleepFor(milliseconds(500));
  ends = true;
  talking.join();
  sleepFor(milliseconds(600));
  const auto recorded = recorder.finish();
  EXPECT_GT(toneIn(recorded, 2, 0, 1000).loudest, 0.4);
  const auto sounds = [](float sample) { return sample != 0; };
  const auto lastSound = std::find_if(recorded.rbegin(), recorded.rend(), sounds);
  EXPECT_GT(lastSound - recorded.rbegin(), 2 * 48000 * 0.3);
  vlm_audio_in_stop(microphone);
  vlm_audio_out_stop(playback);
}

TEST(SoundServer, ThatComesBackIsPlayedAndRecordedAgain) {
  for (const auto& [output, input] : {std::pair{"spk", "mic"}, {"", ""}}) {
    expectInOneAttempt([&, to = output, from = input] {
      loseAndFind([](auto& server) { server.kill(); }, [](auto& server) { server.start(); }, to,
                  from);
    });
  }
}

TEST(SoundServer, HasDevicesThatAreUnpluggedAndPluggedInAgain) {
  const auto unplug = [](PrivateSoundServer&) {
    outputOf({"pactl", "unload-module", "module-remap-source"});
    outputOf({"pactl", "unload-module", "module-null-sink"});
  };
  const auto plug = [](PrivateSoundServer&) {
    for (const std::string name : {"spk rate=48000", "micfeed rate=44100"}) {
      outputOf({"sh", "-c",
                "pactl load-module module-null-sink norewinds=1 format=float32le "
                "sink_name=" +
                    name});
    }
    outputOf({"pactl", "load-module", "module-remap-source", "source_name=mic",
              "master=micfeed.monitor", "rate=44100", "format=float32le"});
    outputOf({"pactl", "set-default-sink", "spk"});
    outputOf({"pactl", "set-default-source", "mic"});
  };
  for (const auto& [output, input] : {std::pair{"spk", "mic"}, {"", ""}}) {
    expectInOneAttempt([&, to = output, from = input] { loseAndFind(unplug, plug, to, from); });
  }
}

// Everything that sounds at once, on a server that goes away under it.
TEST(SoundServer, ComesAndGoesAndNothingHangs) {
  PrivateDesktop desktop;
  PrivateSoundServer server;
  const auto file = soundFile(server, "noise.wav", noise(96000));
  const Samples tone = sine(0.2, {997, 997}, 0.5);
  CapturedAudio captured;
  captured.samples.reserve(1 << 24);  // what has arrived is read while more arrives
  void* capture = vlm_capture_start_display(0, 30, 0, 0, CapturedAudio::onFrame,
                                            CapturedAudio::onAudio, &captured);
  for (const int signal : {SIGKILL, SIGSTOP, SIGTERM}) {
    SCOPED_TRACE(signal);
    Microphone heard;
    void* microphone = vlm_audio_in_start(nullptr, Microphone::onSamples, &heard);
    void* playback = vlm_audio_out_start(nullptr, 2);
    void* sound = vlm_sfx_create(file.c_str());
    vlm_sfx_play(sound, 1, -1);
    ASSERT_NE(microphone, nullptr);
    ASSERT_NE(playback, nullptr);
    ASSERT_TRUE(vlm_sfx_is_playing(sound));
    vlm_audio_out_write(playback, tone.data(), static_cast<std::int32_t>(tone.size()));
    sleepFor(milliseconds(100));
    server.process().signal(signal);
    sleepFor(milliseconds(100));
    const auto start = std::chrono::steady_clock::now();
    vlm_audio_out_write(playback, tone.data(), static_cast<std::int32_t>(tone.size()));
    vlm_sfx_seek(sound, 1);
    vlm_sfx_position(sound);
    vlm_audio_in_stop(microphone);
    vlm_audio_out_stop(playback);
    vlm_sfx_destroy(sound);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(3));
    EXPECT_EQ(vlm_audio_out_start("spk", 2), nullptr);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::milliseconds(5500));
    const int blocks = captured.blocks;
    EXPECT_TRUE(eventually([&] { return captured.blocks > blocks + 5; })) << "silence goes on";
    server.kill();
    server.start();
  }
  const ChildProcess other({"paplay", "--device=spk", file});
  EXPECT_TRUE(eventually([&] {
    const std::size_t size = static_cast<std::size_t>(captured.blocks) * 960 * 2;
    return std::any_of(captured.samples.data() + size - 19200, captured.samples.data() + size,
                       [](float sample) { return sample != 0; });
  })) << "the capture has found the new server";
  vlm_capture_stop(capture);
}

}  // namespace
}  // namespace vlm::test
