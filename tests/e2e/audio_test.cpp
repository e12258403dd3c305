#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <random>
#include <span>
#include <thread>

#include "VelmoraMacNative.h"
#include "support/attempts.h"
#include "support/private_desktop.h"
#include "support/private_sound_server.h"
#include "support/tone.h"

namespace vlm::test {
namespace {

using std::chrono::milliseconds;

void sleepFor(milliseconds time) {
  std::this_thread::sleep_for(time);
}

// Seconds that a tone lasts; the long run of a person sets more.
double toneSeconds() {
  const char* text = std::getenv("VLM_TONE_SECONDS");
  return text != nullptr ? std::stod(text) : 2;
}

nlohmann::json devicesOf(std::int32_t input) {
  const auto size = -vlm_audio_devices_json(input, nullptr, 0);
  std::string text(static_cast<std::size_t>(size), '.');
  EXPECT_EQ(vlm_audio_devices_json(input, text.data(), size), size - 1);
  return nlohmann::json::parse(text.substr(0, text.size() - 1));
}

// How often a text stands in what pactl lists. (Its JSON does not know letters beyond ASCII.)
std::size_t timesListed(const std::string& kind, const std::string& text) {
  return timesIn(outputOf({"env", "LC_ALL=C.UTF-8", "pactl", "list", kind}), text);
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

// Feeds a playback like a host that gets its samples from a network: 20 ms at a time, by the clock.
void playSteadily(void* playback, const Samples& samples, std::size_t channels) {
  const std::size_t piece = 960 * channels;
  auto due = std::chrono::steady_clock::now();
  for (std::size_t at = 0; at < samples.size(); at += piece) {
    vlm_audio_out_write(playback, samples.data() + at,
                        static_cast<std::int32_t>(std::min(piece, samples.size() - at)));
    // A lead of 60 ms more than the cushion.
    if (at < 3 * piece) continue;
    std::this_thread::sleep_until(due += milliseconds(20));
  }
}

// Stereo samples as a file of the format that the name's ending tells.
std::string soundFile(const PrivateSoundServer& server, const std::string& name,
                      const Samples& samples, int rate = 48000) {
  writeFile(server.file("raw"), samples);
  outputOf({"ffmpeg", "-y", "-loglevel", "error", "-f", "f32le", "-ar", std::to_string(rate), "-ac",
            "2", "-i", server.file("raw"), server.file(name)});
  return server.file(name);
}

void expectTone(const Tone& tone, double frequency, double amplitude, double seconds) {
  EXPECT_NEAR(tone.frequency, frequency, 0.01);
  EXPECT_NEAR(tone.amplitude, amplitude, amplitude * 0.01);
  EXPECT_NEAR(tone.loudest, amplitude, amplitude * 0.01);
  EXPECT_LT(tone.jump, 0.02);
  EXPECT_GT(tone.seconds, seconds - 0.1);
}

TEST(Playback, IsOneUnbrokenToneOnEachSide) {
  PrivateSoundServer server;
  const auto attempt = [&](const char* uid) {
    SoundRecorder recorder(server, "spk.monitor");
    void* playback = vlm_audio_out_start(uid, 2);
    ASSERT_NE(playback, nullptr);
    const double seconds = toneSeconds();
    playSteadily(playback, sine(seconds, {997, 1499}, 0.5), 2);
    sleepFor(milliseconds(200));
    vlm_audio_out_stop(playback);
    const auto recorded = recorder.finish();
    expectTone(toneIn(recorded, 2, 0, 997), 997, 0.5, seconds);
    expectTone(toneIn(recorded, 2, 1, 1499), 1499, 0.5, seconds);
    EXPECT_LT(toneIn(recorded, 2, 0, 1499).amplitude, 0.001);
  };
  expectInOneAttempt([&] { attempt("spk"); });
  expectInOneAttempt([&] { attempt(nullptr); });
}

// Where streams of this process play, by the names of the sinks.
std::vector<std::string> sinksOfStreams() {
  std::map<int, std::string> names;
  for (const auto& sink :
       nlohmann::json::parse(outputOf({"pactl", "-f", "json", "list", "sinks"}))) {
    names[sink["index"]] = sink["name"];
  }
  std::vector<std::string> result;
  const auto listed = outputOf({"pactl", "-f", "json", "list", "sink-inputs"});
  for (const auto& stream : nlohmann::json::parse(listed)) result.push_back(names[stream["sink"]]);
  return result;
}

TEST(Playback, StaysOnItsDeviceOrFollowsTheDefault) {
  PrivateSoundServer server;
  void* named = vlm_audio_out_start("spk", 1);
  void* unnamed = vlm_audio_out_start("", 1);
  EXPECT_EQ(sinksOfStreams(), (std::vector<std::string>{"spk", "spk"}));
  outputOf({"pactl", "set-default-sink", "micfeed"});
  EXPECT_TRUE(eventually([] {
    return sinksOfStreams() == std::vector<std::string>{"spk", "micfeed"};
  }));
  outputOf({"pactl", "unload-module", "module-null-sink"});
  const Samples samples(4800, 0.1F);
  for (void* playback : {named, unnamed}) {
    vlm_audio_out_write(playback, samples.data(), 4800);
    vlm_audio_out_stop(playback);
  }
  EXPECT_EQ(vlm_audio_out_start(nullptr, 1), nullptr) << "no output is left";
}

struct Microphone {
  std::mutex mutex;
  Samples samples;
  std::vector<std::int32_t> counts;

  static void onSamples(const float* samples, std::int32_t count, void* user) {
    auto& self = *static_cast<Microphone*>(user);
    const std::lock_guard lock(self.mutex);
    self.samples.insert(self.samples.end(), samples, samples + count);
    self.counts.push_back(count);
  }
};

TEST(Microphone, GivesStereoAt44100AsMonoAt48000) {
  PrivateSoundServer server;
  const double seconds = toneSeconds();
  const auto tone = soundFile(server, "tone.wav", sine(seconds, {997, 997}, 0.5, 44100), 44100);
  const auto attempt = [&](const char* uid) {
    Microphone heard;
    void* microphone = vlm_audio_in_start(uid, Microphone::onSamples, &heard);
    ASSERT_NE(microphone, nullptr);
    const auto start = std::chrono::steady_clock::now();
    outputOf({"paplay", "--device=micfeed", tone});
    const std::chrono::duration<double> lasted = std::chrono::steady_clock::now() - start;
    vlm_audio_in_stop(microphone);
    const auto stopped = heard.samples.size();
    sleepFor(milliseconds(50));
    EXPECT_EQ(heard.samples.size(), stopped);
    expectTone(toneIn(heard.samples, 1, 0, 997), 997, 0.5, seconds);
    EXPECT_NEAR(static_cast<double>(stopped), lasted.count() * 48000, 0.1 * 48000);
    // 960 frames at 44,100 Hz are 1044.9 at 48,000 Hz; the first block fills the converter.
    ASSERT_GT(heard.counts.size(), 10U);
    for (std::size_t i = 1; i < heard.counts.size(); ++i) {
      EXPECT_TRUE(heard.counts[i] == 1044 || heard.counts[i] == 1045) << heard.counts[i];
    }
  };
  expectInOneAttempt([&] { attempt("mic"); });
  expectInOneAttempt([&] { attempt(nullptr); });
}

TEST(Microphone, IsNoneWhereThereAreOnlyMonitors) {
  PrivateSoundServer server;
  outputOf({"pactl", "unload-module", "module-remap-source"});
  EXPECT_EQ(vlm_audio_in_start(nullptr, Microphone::onSamples, nullptr), nullptr);
  EXPECT_EQ(vlm_audio_in_start("spk.monitor", Microphone::onSamples, nullptr), nullptr);
}

TEST(Microphone, StopsWhenItsCallbackReturnsHoweverSlowThatIs) {
  PrivateSoundServer server;
  std::atomic<int> millisecondsTaken = 30;  // for blocks of 20
  void* microphone = vlm_audio_in_start(
      "mic",
      [](const float*, std::int32_t, void* taken) {
        sleepFor(milliseconds(static_cast<std::atomic<int>*>(taken)->load()));
      },
      &millisecondsTaken);
  ASSERT_NE(microphone, nullptr);
  sleepFor(milliseconds(500));
  std::atomic<bool> hasStopped = false;
  std::thread stopping([&] {
    vlm_audio_in_stop(microphone);
    hasStopped = true;
  });
  EXPECT_TRUE(eventually([&] { return hasStopped.load(); }, std::chrono::seconds(3)));
  millisecondsTaken = 0;
  stopping.join();
}

// What a microphone hears from now on.
Samples heardIn(Microphone& heard, milliseconds time) {
  {
    const std::lock_guard lock(heard.mutex);
    heard.samples.clear();
  }
  sleepFor(time);
  const std::lock_guard lock(heard.mutex);
  return heard.samples;
}

TEST(Microphone, NeverHearsWhatTheMachinePlays) {
  PrivateSoundServer server;
  Microphone heard;
  void* microphone = vlm_audio_in_start(nullptr, Microphone::onSamples, &heard);
  ASSERT_NE(microphone, nullptr);
  EXPECT_FALSE(heardIn(heard, milliseconds(300)).empty());
  const ChildProcess player(
      {"paplay", "--device=spk", soundFile(server, "tone.wav", sine(10, {997, 997}, 0.5))});
  // The server moves the recording to what is left, the monitor of an output.
  outputOf({"pactl", "set-default-source", "spk.monitor"});
  outputOf({"pactl", "unload-module", "module-remap-source"});
  EXPECT_TRUE(heardIn(heard, milliseconds(700)).empty());
  outputOf(
      {"pactl", "load-module", "module-remap-source", "source_name=mic", "master=micfeed.monitor"});
  outputOf({"pactl", "set-default-source", "mic"});
  EXPECT_TRUE(eventually([&] { return !heardIn(heard, milliseconds(100)).empty(); }));
  vlm_audio_in_stop(microphone);
}

TEST(Microphone, FoldsEveryChannelOfADevice) {
  const struct {
    const char* channels;
    std::vector<double> weights;  // to each other
  } cases[] = {
      {"front-left,front-right,lfe", {1, 1, 0.7}},
      {"front-left,rear-left,front-right,rear-right", {1, 0.7, 1, 0.7}},
      {"front-left,front-right,front-center,lfe,rear-left,rear-right", {1, 1, 1.4, 0.7, 0.7, 0.7}},
      {"front-left,front-right,rear-left,rear-right,front-center,lfe,side-left,side-right",
       {1, 1, 0.7, 0.7, 1.4, 0.7, 0.7, 0.7}},
      {"aux0,aux1,aux2,aux3,aux4", {1, 1, 1, 1, 1}},
  };
  PrivateSoundServer server;
  for (const auto& [channels, weights] : cases) {
    SCOPED_TRACE(channels);
    const auto count = std::to_string(weights.size());
    const std::string map(channels);
    const auto sink =
        outputOf({"pactl", "load-module", "module-null-sink", "sink_name=many", "rate=48000",
                  "format=float32le", "norewinds=1", "channels=" + count, "channel_map=" + map});
    const auto source =
        outputOf({"pactl", "load-module", "module-remap-source", "source_name=manymic",
                  "master=many.monitor", "remix=no", "channels=" + count, "channel_map=" + map,
                  "master_channel_map=" + map});
    std::vector<double> frequencies;
    for (std::size_t i = 0; i < weights.size(); ++i) {
      frequencies.push_back(500 + 200 * static_cast<double>(i));
    }
    writeFile(server.file("many.raw"), sine(3, frequencies, 0.5));
    const ChildProcess player({"pacat", "--playback", "--device=many", "--format=float32le",
                               "--rate=48000", "--channels=" + count, "--channel-map=" + map,
                               "--raw", server.file("many.raw")});
    expectInOneAttempt([&, &wanted = weights] {
      Microphone heard;
      void* microphone = vlm_audio_in_start("manymic", Microphone::onSamples, &heard);
      ASSERT_NE(microphone, nullptr);
      sleepFor(milliseconds(300));
      const auto samples = heardIn(heard, milliseconds(300));
      vlm_audio_in_stop(microphone);
      double sum = 0;
      for (const double weight : wanted) sum += weight;
      for (std::size_t i = 0; i < wanted.size(); ++i) {
        EXPECT_NEAR(toneIn(samples, 1, 0, frequencies[i]).amplitude, 0.5 * wanted[i] / sum, 0.02)
            << "channel " << i;
      }
    });
    outputOf({"pactl", "unload-module", source});
    outputOf({"pactl", "unload-module", sink});
  }
}

struct CapturedAudio {
  Samples samples;
  std::atomic<int> blocks = 0;
  std::atomic<int> frames = 0;

  static void onAudio(const float* samples, std::int32_t frames, std::int32_t channels,
                      std::int32_t rate, void* user) {
    auto& self = *static_cast<CapturedAudio*>(user);
    if (channels != 2 || rate != 48000) return;
    self.samples.insert(self.samples.end(), samples, samples + frames * 2);
    ++self.blocks;
  }
  static void onFrame(void*, std::int32_t, std::int32_t, std::int64_t, void* user) {
    ++static_cast<CapturedAudio*>(user)->frames;
  }
};

void captureOthersAndPlay() {
  PrivateDesktop desktop;
  PrivateSoundServer server;
  const double seconds = toneSeconds();
  const auto before = soundFile(server, "before.wav", sine(seconds + 2, {440, 440}, 0.25));
  const auto during = soundFile(server, "during.wav", sine(seconds, {997, 1499}, 0.25));
  const ChildProcess playsAlready({"paplay", "--device=micfeed", before});
  sleepFor(milliseconds(200));
  CapturedAudio captured;
  void* capture = vlm_capture_start_display(0, 30, 0, 0, CapturedAudio::onFrame,
                                            CapturedAudio::onAudio, &captured);
  ASSERT_NE(capture, nullptr);
  const auto start = std::chrono::steady_clock::now();
  void* playback = vlm_audio_out_start("spk", 2);
  std::thread own([&] { playSteadily(playback, sine(seconds + 0.5, {2500, 2500}, 0.5), 2); });
  outputOf({"paplay", "--device=spk", during});
  own.join();
  const std::chrono::duration<double> lasted = std::chrono::steady_clock::now() - start;
  vlm_capture_stop(capture);
  vlm_audio_out_stop(playback);
  const Samples& all = captured.samples;
  EXPECT_NEAR(static_cast<double>(all.size()) / 2, lasted.count() * 48000, 0.1 * 48000);
  EXPECT_GT(captured.frames, 0);
  // Both others are heard all the time that they play, and this process never.
  const std::span<const float> middle(all.data() + all.size() / 4 * 2, all.size() / 4);
  const Tone other = toneIn(middle, 2, 0, 997);
  EXPECT_NEAR(other.frequency, 997, 0.01);
  EXPECT_NEAR(other.amplitude, 0.25, 0.01);
  EXPECT_LT(other.jump, 0.1);
  EXPECT_NEAR(toneIn(middle, 2, 1, 1499).amplitude, 0.25, 0.01);
  EXPECT_NEAR(toneIn(middle, 2, 0, 440).amplitude, 0.25, 0.01);
  EXPECT_LT(toneIn(middle, 2, 0, 2500).loudest, 0.005);
}

TEST(CaptureAudio, IsWhatOtherProgramsPlayAndNotWhatThisOneDoes) {
  expectInOneAttempt(captureOthersAndPlay);
}

// Where `part` begins in the left channel of a recording, sample by sample; -1 when nowhere.
std::ptrdiff_t find(const Samples& recorded, std::span<const float> part, std::size_t from = 0) {
  const auto at = std::search(recorded.begin() + static_cast<std::ptrdiff_t>(from), recorded.end(),
                              part.begin(), part.end());
  return at == recorded.end() ? -1 : at - recorded.begin();
}

// Noise, no two places of which are alike; half as loud on the right. Exact in 16 bits.
Samples noise(std::size_t frames) {
  Samples samples;
  std::mt19937 random(7);
  for (std::size_t i = 0; i < frames; ++i) {
    const auto value = static_cast<float>(static_cast<int>(random() % 16384) - 8192) / 16384;
    samples.insert(samples.end(), {value, value / 2});
  }
  return samples;
}

bool hasEnded(void* sound) {
  return eventually([&] { return !vlm_sfx_is_playing(sound); });
}

void playThrice() {
  PrivateSoundServer server;
  const Samples samples = noise(24000);
  void* sound = vlm_sfx_create(soundFile(server, "noise.wav", samples).c_str());
  ASSERT_NE(sound, nullptr);
  EXPECT_EQ(vlm_sfx_duration(sound), 0.5);
  EXPECT_FALSE(vlm_sfx_is_playing(sound));
  SoundRecorder recorder(server, "spk.monitor");
  const auto start = std::chrono::steady_clock::now();
  vlm_sfx_play(sound, 5, 2);
  EXPECT_TRUE(vlm_sfx_is_playing(sound));
  sleepFor(milliseconds(700));
  const std::chrono::duration<double> passed = std::chrono::steady_clock::now() - start;
  EXPECT_NEAR(vlm_sfx_position(sound), passed.count() - 0.5, 0.1);
  EXPECT_TRUE(hasEnded(sound));
  EXPECT_EQ(vlm_sfx_position(sound), 0);
  sleepFor(milliseconds(100));
  const auto looped = recorder.finish();
  // The server passes floats as they are.
  Samples thrice;
  for (int i = 0; i < 3; ++i) thrice.insert(thrice.end(), samples.begin(), samples.end());
  const auto begin = find(looped, std::span(samples).first(64));
  ASSERT_GE(begin, 0);
  const std::span heard(looped.begin() + begin, looped.end());
  ASSERT_GE(heard.size(), thrice.size());
  EXPECT_TRUE(std::ranges::equal(heard.first(thrice.size()), thrice));
  EXPECT_TRUE(std::ranges::all_of(heard.subspan(thrice.size()), [](float s) { return s == 0; }));
  vlm_sfx_destroy(sound);
}

TEST(SoundEffects, PlayEverySampleOnceInOrderAndLoopWithoutAGap) {
  expectInOneAttempt(playThrice);
}

void playAndSeek() {
  PrivateSoundServer server;
  const Samples samples = noise(96000);
  const std::span all(samples);
  void* sound = vlm_sfx_create(soundFile(server, "noise.flac", samples).c_str());
  ASSERT_NE(sound, nullptr);
  SoundRecorder recorder(server, "spk.monitor");
  vlm_sfx_play_from(sound, 1, 1);
  EXPECT_NEAR(vlm_sfx_position(sound), 1, 0.05);
  sleepFor(milliseconds(300));
  vlm_sfx_seek(sound, 0.25);
  EXPECT_EQ(vlm_sfx_position(sound), 0.25);
  sleepFor(milliseconds(300));
  vlm_sfx_stop(sound);
  const double stopped = vlm_sfx_position(sound);
  EXPECT_NEAR(stopped, 0.5, 0.1);
  EXPECT_FALSE(vlm_sfx_is_playing(sound));
  sleepFor(milliseconds(100));
  vlm_sfx_seek(sound, 1.9);
  EXPECT_TRUE(vlm_sfx_is_playing(sound));
  EXPECT_TRUE(hasEnded(sound));
  const auto recorded = recorder.finish();
  const auto first = find(recorded, all.subspan(2 * 48000, 64));
  const auto second = find(recorded, all.subspan(2 * 12000, 64));
  const auto third = find(recorded, all.subspan(2 * 91200, 64));
  ASSERT_TRUE(first >= 0 && second > first && third > second);
  const auto place = [&](std::ptrdiff_t from) { return recorded.begin() + from; };
  EXPECT_TRUE(std::equal(place(first), place(second), samples.begin() + 2 * 48000))
      << "nothing between the two places";
  EXPECT_TRUE(std::equal(place(third), place(third) + 2 * 4800, samples.begin() + 2 * 91200));
  const auto silence = std::find(place(second), recorded.end(), 0.0F);
  EXPECT_NEAR(static_cast<double>(silence - place(second)) / 2 / 48000 + 0.25, stopped, 0.05);

  SoundRecorder half(server, "spk.monitor");
  vlm_sfx_play(sound, 0.5, 0);
  sleepFor(milliseconds(300));
  vlm_sfx_destroy(sound);
  Samples halved(samples.begin(), samples.begin() + 9600);
  for (float& sample : halved) sample *= 0.5F;
  EXPECT_GE(find(half.finish(), halved), 0);
}

TEST(SoundEffects, GoWhereTheyAreToldExactly) {
  expectInOneAttempt(playAndSeek);
}

void repeatAClick() {
  PrivateSoundServer server;
  const Samples click = noise(960);
  void* sound = vlm_sfx_create(soundFile(server, "click.wav", click).c_str());
  ASSERT_NE(sound, nullptr);
  SoundRecorder recorder(server, "spk.monitor");
  vlm_sfx_play(sound, 1, 0);
  sleepFor(milliseconds(5));  // all of it is with the server by now
  vlm_sfx_play(sound, 1, 19);
  EXPECT_TRUE(hasEnded(sound));
  sleepFor(milliseconds(100));
  const auto recorded = recorder.finish();
  Samples repeated;
  for (int i = 0; i < 20; ++i) repeated.insert(repeated.end(), click.begin(), click.end());
  EXPECT_GE(find(recorded, repeated), 0);
  vlm_sfx_destroy(sound);
}

TEST(SoundEffects, KeepTheirRepeatsWhenTheyAreTriggeredAgain) {
  expectInOneAttempt(repeatAClick);
}

TEST(SoundEffects, LeaveNothingBehindWhenTheyHaveEnded) {
  PrivateSoundServer server;
  // Some servers suspend without it.
  runCommand({"pactl", "load-module", "module-suspend-on-idle", "timeout=1"});
  const auto clients = timesListed("clients", "Client #");
  const auto file = soundFile(server, "short.wav", sine(1.5, {997, 997}, 0.02));
  std::vector<void*> sounds;
  for (int i = 0; i < 200; ++i) {
    sounds.push_back(vlm_sfx_create(file.c_str()));
    vlm_sfx_play(sounds.back(), 1, 4);
  }
  // The server mixes 32 streams at most.
  EXPECT_EQ(timesListed("sink-inputs", "Sink Input #"), 1U);
  EXPECT_EQ(timesListed("clients", "Client #"), clients + 1) << "one connection for all";
  SoundRecorder recorder(server, "spk.monitor");
  sleepFor(milliseconds(300));
  // Each has another phase.
  EXPECT_GT(toneIn(recorder.finish(), 2, 0, 997).loudest, 0.1);
  for (void* sound : sounds) EXPECT_TRUE(vlm_sfx_is_playing(sound));
  for (void* sound : sounds) vlm_sfx_play_from(sound, 1.4, 1);
  EXPECT_TRUE(eventually([] { return timesListed("sink-inputs", "Sink Input #") == 0; }));
  for (void* sound : sounds) EXPECT_FALSE(vlm_sfx_is_playing(sound));
  EXPECT_TRUE(eventually([] {
    return outputOf({"pactl", "list", "short", "sinks"}).find("RUNNING") == std::string::npos;
  })) << "the handles are still open";
  for (void* sound : sounds) vlm_sfx_destroy(sound);
  EXPECT_TRUE(eventually([&] { return timesListed("clients", "Client #") == clients; }));
}

void playEveryFormat() {
  PrivateSoundServer server;
  testing::internal::CaptureStderr();
  for (const auto* name : {"a.wav", "a.flac", "a.ogg", "a.mp3", "a.m4a"}) {
    SCOPED_TRACE(name);
    void* sound = vlm_sfx_create(soundFile(server, name, sine(1, {997, 1499}, 0.5)).c_str());
    ASSERT_NE(sound, nullptr);
    EXPECT_NEAR(vlm_sfx_duration(sound), 1, 0.03);
    if (std::string(name) == "a.mp3" || std::string(name) == "a.m4a") {
      SoundRecorder recorder(server, "spk.monitor");
      vlm_sfx_play(sound, 1, 0);
      EXPECT_TRUE(hasEnded(sound));
      const auto recorded = recorder.finish();
      EXPECT_NEAR(toneIn(recorded, 2, 0, 997).frequency, 997, 0.1);
      EXPECT_NEAR(toneIn(recorded, 2, 1, 1499).loudest, 0.5, 0.2);
    }
    vlm_sfx_destroy(sound);
  }
  // Lengths that have to be guessed, junk, a file that is cut off.
  const auto tone = sine(1, {997, 1499}, 0.5);
  auto bytes = contentsOf(soundFile(server, "a.mp3", tone));
  writeFile(server.file("junk.mp3"), "some junk" + bytes.substr(bytes.find("Info") + 3000));
  bytes = contentsOf(soundFile(server, "a.m4a", tone));
  writeFile(server.file("cut.m4a"), bytes.substr(0, bytes.size() / 2));
  bytes = contentsOf(soundFile(server, "a.flac", tone));
  writeFile(server.file("hole.flac"), bytes.replace(bytes.size() / 2, 50, 50, '?'));
  for (const auto* name : {"junk.mp3", "cut.m4a", "hole.flac"}) {
    vlm_sfx_destroy(vlm_sfx_create(server.file(name).c_str()));
  }
  writeFile(server.file("text.wav"), std::string("no sound at all"));
  writeFile(server.file("empty.wav"), std::string());
  for (const auto* name : {"text.wav", "empty.wav", "missing.wav", ""}) {
    EXPECT_EQ(vlm_sfx_create(server.file(name).c_str()), nullptr) << name;
  }
  EXPECT_EQ(testing::internal::GetCapturedStderr(), "");
}

TEST(SoundEffects, AreReadFromEveryUsualFormat) {
  expectInOneAttempt(playEveryFormat);
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
    loseAndFind([](auto& server) { server.kill(); }, [](auto& server) { server.start(); }, output,
                input);
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
    loseAndFind(unplug, plug, output, input);
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
