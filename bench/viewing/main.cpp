// What viewing costs: processor time of decoding and showing for each frame, of the library and of
// GStreamer, one after the other on the same streams in the same X server. The streams are what the
// library makes of the contents that the sharing benchmark shows.
#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/support/clock.h"
#include "bench/support/meter.h"
#include "support/private_desktop.h"

namespace vlm::bench {
namespace {

using Command = std::vector<std::string>;

constexpr const char* kFps = "30";
constexpr double kRecordedSeconds = 6;
constexpr double kWarmUpSeconds = 2;

std::string besideUs(const std::string& program) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / program).string();
}

void sleepFor(double seconds) {
  sleepUntil(monotonicNow() + static_cast<std::int64_t>(seconds * 1e9));
}

void record(const Command& client, const std::string& path) {
  const test::PrivateDesktop desktop;
  test::runCommand({besideUs("vlm_bench_content"), "wallpaper"});
  const test::ChildProcess content(client);
  Metered sharer({besideUs("vlm_bench_sharing_ours"), "%fd", kFps, "8000000", path},
                 Metered::Protocol::answers);
  sleepFor(kRecordedSeconds);
}

struct Cost {
  double perFrameMs = 0;
  double framesPerSecond = 0;
};

Cost measure(const std::string& player, const std::string& path, double seconds) {
  const test::PrivateDesktop desktop;
  Metered program({besideUs(player), "%fd", path, kFps}, Metered::Protocol::answers);
  sleepFor(kWarmUpSeconds);
  const Reading before = program.read();
  sleepFor(seconds);
  const Reading after = program.read();
  const auto frames =
      std::max(1.0, static_cast<double>(after.delivered.frames - before.delivered.frames));
  return {static_cast<double>(after.processor - before.processor) / 1e6 / frames,
          frames / (static_cast<double>(after.time - before.time) / 1e9)};
}

void run(double seconds) {
  const std::string program = besideUs("vlm_bench_content");
  const std::pair<std::string, Command> contents[] = {
      {"moving window", {program, "window", kFps}},
      {"scrolling terminal",
       {"xterm", "-geometry", "140x40+200+200", "-e", program, "lines", kFps}},
      {"full-screen motion", {program, "motion", kFps}}};
  std::printf("| content            | ours ms/frame | frames/s | GStreamer | frames/s | ratio |\n");
  std::printf("|--------------------|--------------:|---------:|----------:|---------:|------:|\n");
  const std::string path =
      std::filesystem::temp_directory_path() / ("vlm_viewing_" + std::to_string(monotonicNow()));
  for (const auto& [name, client] : contents) {
    record(client, path);
    const Cost ours = measure("vlm_bench_viewing_ours", path, seconds);
    const Cost peer = measure("vlm_bench_viewing_gstreamer", path, seconds);
    std::printf("| %-18s | %13.2f | %8.1f | %9.2f | %8.1f | %5.2f |\n", name.c_str(),
                ours.perFrameMs, ours.framesPerSecond, peer.perFrameMs, peer.framesPerSecond,
                ours.perFrameMs / peer.perFrameMs);
    std::fflush(stdout);
  }
  std::filesystem::remove(path);
}

}  // namespace
}  // namespace vlm::bench

int main(int count, char** arguments) {
  try {
    vlm::bench::run(count > 1 ? std::atof(arguments[1]) : 8);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "viewing: %s\n", error.what());
    return 1;
  }
}
