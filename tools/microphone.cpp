#include <unistd.h>

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>

#include "command.h"
#include "failure.h"
#include "library.h"
#include "locked.h"
#include "main_loop.h"
#include "options.h"
#include "wav_file.h"

namespace vlm::tools {
namespace {

constexpr double kRate = 48000;

struct MicOptions {
  RunOptions run;
  std::string device;
  std::string wav;
};

struct Levels {
  std::int64_t frames = 0;
  double peak = 0;
  double squares = 0;
  double recentPeak = 0;  // since it was last shown
};

double decibels(double level) {
  return level > 0 ? 20 * std::log10(level) : -144;
}

// Measures what the microphone gives and writes it to a file where one is wanted.
class Meter {
 public:
  Meter(const MicOptions& options, MainLoop& loop) : loop_(loop) {
    if (!options.wav.empty()) wav_.emplace(options.wav, std::uint16_t{1}, std::uint32_t{48000});
    microphone_.reset(vlm_audio_in_start(options.device.c_str(), onSamples, this));
    if (!microphone_) throw Failure("there is no microphone that can be started");
  }

  void show() {
    const double level = levels_.with(
        [](Levels& levels) { return decibels(std::exchange(levels.recentPeak, 0.0)); });
    constexpr int kWidth = 48;
    const int bar = std::clamp(static_cast<int>(level) + kWidth, 0, kWidth);
    std::fprintf(stderr, "\r[%s%s] %6.1f dB\x1b[K", std::string(bar, '#').c_str(),
                 std::string(kWidth - bar, ' ').c_str(), level);
  }

  Levels finish() {
    microphone_.reset();
    if (wav_) wav_->finish();
    return levels_.with([](const Levels& levels) { return levels; });
  }

 private:
  static void onSamples(const float* samples, std::int32_t count, void* self) {
    auto& meter = *static_cast<Meter*>(self);
    meter.loop_.guarded([&] { meter.take({samples, static_cast<std::size_t>(count)}); });
  }

  void take(std::span<const float> samples) {
    levels_.with([&](Levels& levels) {
      for (const float sample : samples) {
        levels.recentPeak = std::max<double>(levels.recentPeak, std::abs(sample));
        levels.squares += double{sample} * sample;
      }
      levels.peak = std::max(levels.peak, levels.recentPeak);
      levels.frames += static_cast<std::int64_t>(samples.size());
    });
    if (wav_) wav_->write(samples);
  }

  MainLoop& loop_;
  std::optional<WavFile> wav_;
  Locked<Levels> levels_;
  Microphone microphone_;
};

void print(const Levels& levels, bool asJson) {
  const double seconds = static_cast<double>(levels.frames) / kRate;
  const double mean =
      levels.frames > 0 ? std::sqrt(levels.squares / static_cast<double>(levels.frames)) : 0;
  if (asJson) {
    const nlohmann::json answer{
        {"frames", levels.frames}, {"peakDb", decibels(levels.peak)}, {"rmsDb", decibels(mean)}};
    std::printf("%s\n", answer.dump().c_str());
  } else {
    std::printf("%.2f s  peak %.1f dB  mean %.1f dB\n", seconds, decibels(levels.peak),
                decibels(mean));
  }
}

int mic(const MicOptions& options) {
  MainLoop loop;
  Meter meter(options, loop);
  const bool onTerminal = isatty(STDERR_FILENO) == 1;
  if (onTerminal) loop.every(std::chrono::milliseconds(50), [&] { meter.show(); });
  if (options.run.seconds > 0) {
    loop.after(std::chrono::milliseconds(std::llround(options.run.seconds * 1000)),
               [&loop] { loop.end("time is up"); });
  }
  const auto ending = loop.run();
  if (onTerminal) std::fputs("\r\x1b[K", stderr);
  print(meter.finish(), options.run.json);
  if (ending.failed) throw Failure(ending.reason);
  return 0;
}

}  // namespace

void addMic(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<MicOptions>();
  auto& command = addCommand(program, chosen, "mic", "Listen to a microphone", options, mic);
  command.add_option("--device", options->device, "An input's uid (the default)")->type_name("UID");
  command.add_option("--wav", options->wav, "Write what is heard to a file")->type_name("FILE.wav");
  addOptions(command, options->run);
}

}  // namespace vlm::tools
