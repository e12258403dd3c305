#include <cmath>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <numbers>
#include <string>
#include <vector>

#include "command.h"
#include "failure.h"
#include "library.h"
#include "main_loop.h"
#include "options.h"

namespace vlm::tools {
namespace {

struct DevicesOptions {
  bool json = false;
};

nlohmann::json devicesOf(std::int32_t input) {
  const std::int32_t room = -vlm_audio_devices_json(input, nullptr, 0);
  std::string text(static_cast<std::size_t>(room) + 1, '\0');
  if (room <= 0 || vlm_audio_devices_json(input, text.data(), room) <= 0) {
    throw Failure("the sound devices can't be listed");
  }
  return nlohmann::json::parse(text.c_str());
}

int devices(const DevicesOptions& options) {
  const auto inputs = devicesOf(1);
  const auto outputs = devicesOf(0);
  if (options.json) {
    const nlohmann::json both{{"inputs", inputs}, {"outputs", outputs}};
    std::printf("%s\n", both.dump().c_str());
    return 0;
  }
  for (const auto& [direction, list] : {std::pair{"input ", inputs}, {"output", outputs}}) {
    for (const auto& device : list) {
      std::printf("%s  %s  %s\n", direction, device["uid"].get<std::string>().c_str(),
                  device["name"].get<std::string>().c_str());
    }
  }
  return 0;
}

struct ToneOptions {
  std::string device;
  double frequency = 440;
  double level = 0.25;
  double seconds = 0;
};

// Keeps a playback a little ahead of the clock.
class ToneWriter {
 public:
  explicit ToneWriter(const ToneOptions& options)
      : step_(2 * std::numbers::pi * options.frequency / kRate),
        level_(options.level),
        playback_(vlm_audio_out_start(options.device.c_str(), 1)),
        start_(monotonicNow()) {
    if (!playback_) throw Failure("there is no sound output that can be started");
  }

  void write() {
    const double seconds = static_cast<double>(monotonicNow() - start_) * 1e-9;
    const auto due = static_cast<std::int64_t>((seconds + kAhead) * kRate);
    std::vector<float> samples;
    for (; written_ < due; ++written_) {
      samples.push_back(
          static_cast<float>(level_ * std::sin(step_ * static_cast<double>(written_))));
    }
    vlm_audio_out_write(playback_.get(), samples.data(), static_cast<std::int32_t>(samples.size()));
  }

 private:
  static constexpr double kRate = 48000;
  static constexpr double kAhead = 0.15;  // seconds

  const double step_;
  const double level_;
  const Playback playback_;
  const std::int64_t start_;
  std::int64_t written_ = 0;
};

int runLoop(MainLoop& loop, double seconds) {
  if (seconds > 0) {
    loop.after(std::chrono::milliseconds(std::llround(seconds * 1000)),
               [&loop] { loop.end("time is up"); });
  }
  const auto ending = loop.run();
  if (ending.failed) throw Failure(ending.reason);
  return 0;
}

int tone(const ToneOptions& options) {
  MainLoop loop;
  ToneWriter writer(options);
  writer.write();
  loop.every(std::chrono::milliseconds(20), [&] { writer.write(); });
  return runLoop(loop, options.seconds);
}

struct PlaySoundOptions {
  std::string file;
  double volume = 1;
  std::int32_t loops = 0;
  double from = 0;
  double seconds = 0;
};

int playSound(const PlaySoundOptions& options) {
  const Sound sound(vlm_sfx_create(options.file.c_str()));
  if (!sound) throw Failure(options.file + " can't be played");
  std::printf("%.3f s\n", vlm_sfx_duration(sound.get()));
  if (options.from > 0) {
    vlm_sfx_play_from(sound.get(), options.from, options.volume);
  } else {
    vlm_sfx_play(sound.get(), options.volume, options.loops);
  }
  if (!vlm_sfx_is_playing(sound.get())) throw Failure("there is no sound output");
  MainLoop loop;
  loop.every(std::chrono::milliseconds(20), [&] {
    if (!vlm_sfx_is_playing(sound.get())) loop.end("end of the file");
  });
  return runLoop(loop, options.seconds);
}

void addSeconds(CLI::App& command, double& seconds, const std::string& otherwise) {
  command.add_option("--seconds", seconds, "End after this time (" + otherwise + ")")
      ->type_name("SECONDS")
      ->check(within(0.001, kMostSeconds));
}

}  // namespace

void addDevices(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<DevicesOptions>();
  addCommand(program, chosen, "devices", "List the sound devices", options, devices)
      .add_flag("--json", options->json, "Print a JSON object");
}

void addTone(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<ToneOptions>();
  auto& command = addCommand(program, chosen, "tone", "Play a steady tone", options, tone);
  command.add_option("--device", options->device, "An output's uid (the default)")
      ->type_name("UID");
  command.add_option("--frequency", options->frequency, "Turns a second (440)")
      ->type_name("HZ")
      ->check(within(1, 24000));
  command.add_option("--level", options->level, "Amplitude, 1 for full scale (0.25)")
      ->type_name("LEVEL")
      ->check(within(0, 1));
  addSeconds(command, options->seconds, "on Ctrl-C");
}

void addPlaySound(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<PlaySoundOptions>();
  auto& command =
      addCommand(program, chosen, "play-sound", "Play a sound file", options, playSound);
  command.add_option("file", options->file, "A WAV, FLAC, Ogg, MP3 or AAC file")
      ->type_name("FILE")
      ->required();
  command.add_option("--volume", options->volume, "0 to 1 (1)")->type_name("VOLUME");
  auto* loops = command.add_option("--loops", options->loops,
                                   "Repetitions after the first time, -1 for endless (0)");
  command.add_option("--from", options->from, "Begin at this second and play once")
      ->type_name("SECONDS")
      ->excludes(loops);
  addSeconds(command, options->seconds, "at the end of the sound");
}

}  // namespace vlm::tools
