#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cstdlib>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <random>
#include <string>
#include <thread>
#include <vector>

#include "VelmoraMacNative.h"
#include "support/attempts.h"
#include "support/private_sound_server.h"
#include "support/tone.h"

// What the tests of sound share: sounds to play, and what hears them.
namespace vlm::test {

using std::chrono::milliseconds;

inline void sleepFor(milliseconds time) {
  std::this_thread::sleep_for(time);
}

// Seconds that a tone lasts; the long run of a person sets more.
inline double toneSeconds() {
  const char* text = std::getenv("VLM_TONE_SECONDS");
  return text != nullptr ? std::stod(text) : 2;
}

// Feeds a playback like a host that gets its samples from a network: 20 ms at a time, by the clock.
inline void playSteadily(void* playback, const Samples& samples, std::size_t channels) {
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
inline std::string soundFile(const PrivateSoundServer& server, const std::string& name,
                             const Samples& samples, int rate = 48000) {
  writeFile(server.file("raw"), samples);
  outputOf({"ffmpeg", "-y", "-loglevel", "error", "-f", "f32le", "-ar", std::to_string(rate), "-ac",
            "2", "-i", server.file("raw"), server.file(name)});
  return server.file(name);
}

inline void expectTone(const Tone& tone, double frequency, double amplitude, double seconds) {
  EXPECT_NEAR(tone.frequency, frequency, 0.01);
  EXPECT_NEAR(tone.amplitude, amplitude, amplitude * 0.01);
  EXPECT_NEAR(tone.loudest, amplitude, amplitude * 0.01);
  EXPECT_LT(tone.jump, 0.02);
  EXPECT_GT(tone.seconds, seconds - 0.1);
}

// Noise, no two places of which are alike; half as loud on the right. Exact in 16 bits.
inline Samples noise(std::size_t frames) {
  Samples samples;
  std::mt19937 random(7);
  for (std::size_t i = 0; i < frames; ++i) {
    const auto value = static_cast<float>(static_cast<int>(random() % 16384) - 8192) / 16384;
    samples.insert(samples.end(), {value, value / 2});
  }
  return samples;
}

// How often a text stands in what pactl lists. (Its JSON does not know letters beyond ASCII.)
inline std::size_t timesListed(const std::string& kind, const std::string& text) {
  return timesIn(outputOf({"env", "LC_ALL=C.UTF-8", "pactl", "list", kind}), text);
}

// Where streams of this process play, by the names of the sinks.
inline std::vector<std::string> sinksOfStreams() {
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

// What a microphone hears from now on.
inline Samples heardIn(Microphone& heard, milliseconds time) {
  {
    const std::lock_guard lock(heard.mutex);
    heard.samples.clear();
  }
  sleepFor(time);
  const std::lock_guard lock(heard.mutex);
  return heard.samples;
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

}  // namespace vlm::test
