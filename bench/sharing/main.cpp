// What sharing a screen costs: processor time of capture and encoding for each delivered frame, of
// the library and of its peers, one after the other on the same contents in the same X server.
// Arguments: seconds for each, the name of the one that is measured alone (or ""), width and
// height.
#include <unistd.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "bench/support/clock.h"
#include "bench/support/meter.h"
#include "support/private_desktop.h"

namespace vlm::bench {
namespace {

using Command = std::vector<std::string>;

constexpr int kFps = 30;
constexpr const char* kBitrate = "8000000";
constexpr double kWarmUpSeconds = 3;

struct Sharer {
  std::string name;
  Command command;
  Metered::Protocol protocol;
};

struct Content {
  std::string name;
  Command client;  // empty for none
};

struct Cost {
  double perFrameMs = 0;   // of processor time; 0 when no frame was delivered
  double perSecondMs = 0;  // of processor time
  double framesPerSecond = 0;
  double megabits = 0;  // a second
  double serverMs = 0;  // processor time of the X server, a second
};

std::string besideUs(const std::string& program) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / program).string();
}

Sharer gstreamer(const std::string& name, const std::string& useDamage) {
  return {name,
          {besideUs("vlm_bench_sharing_gstreamer"), "%fd",
           "ximagesrc show-pointer=false use-damage=" + useDamage +
               " ! video/x-raw,framerate=30/1 ! videoconvert ! video/x-raw,format=NV12"
               " ! x264enc speed-preset=ultrafast tune=zerolatency bitrate=8000 threads=1"
               " ! video/x-h264,profile=main ! fakesink name=sink sync=false"},
          Metered::Protocol::answers};
}

Sharer ffmpeg(const std::string& display, const std::string& size) {
  return {"FFmpeg",
          {"ffmpeg",
           "-nostdin",
           "-loglevel",
           "error",
           "-nostats",
           "-progress",
           "pipe:%fd",
           "-stats_period",
           "0.2",
           "-f",
           "x11grab",
           "-draw_mouse",
           "0",
           "-framerate",
           std::to_string(kFps),
           "-video_size",
           size,
           "-i",
           display,
           "-c:v",
           "libx264",
           "-threads",
           "1",
           "-preset",
           "ultrafast",
           "-tune",
           "zerolatency",
           "-pix_fmt",
           "yuv420p",
           "-profile:v",
           "main",
           "-b:v",
           kBitrate,
           "-f",
           "h264",
           "-y",
           "/dev/null"},
          Metered::Protocol::progress};
}

// Those whose names begin with `only`.
std::vector<Sharer> sharers(const std::string& display, const std::string& size,
                            const std::string& only) {
  std::vector<Sharer> result = {
      {"ours",
       {besideUs("vlm_bench_sharing_ours"), "%fd", std::to_string(kFps), kBitrate},
       Metered::Protocol::answers},
      ffmpeg(display, size),
      gstreamer("GStreamer", "false"),
      gstreamer("GStreamer, damage", "true")};
  std::erase_if(result, [&](const Sharer& sharer) { return !sharer.name.starts_with(only); });
  return result;
}

std::vector<Content> contents() {
  const std::string program = besideUs("vlm_bench_content");
  // Changes come twice as fast as frames, so that every frame of every sharer shows a new one.
  const std::string rate = std::to_string(2 * kFps);
  return {{"still screen", {}},
          {"moving window", {program, "window", rate}},
          {"scrolling terminal",
           {"xterm", "-geometry", "140x40+200+200", "-e", program, "lines", rate}},
          {"full-screen motion", {program, "motion", rate}}};
}

Cost measure(const Sharer& sharer, pid_t server, double seconds) {
  Metered program(sharer.command, sharer.protocol);
  sleepUntil(monotonicNow() + static_cast<std::int64_t>(kWarmUpSeconds * 1e9));
  const auto serverBefore = processorTime(server);
  const Reading before = program.read();
  sleepUntil(before.time + static_cast<std::int64_t>(seconds * 1e9));
  const Reading after = program.read();
  const auto serverAfter = processorTime(server);
  const auto frames = static_cast<double>(after.delivered.frames - before.delivered.frames);
  const double span = static_cast<double>(after.time - before.time) / 1e9;
  const double processor = static_cast<double>(after.processor - before.processor) / 1e6;
  return {frames > 0 ? processor / frames : 0, processor / span, frames / span,
          static_cast<double>(after.delivered.bytes - before.delivered.bytes) * 8e-6 / span,
          static_cast<double>(serverAfter - serverBefore) / 1e6 / span};
}

void printRow(const std::string& content, const std::string& sharer, const Cost& cost) {
  std::printf("| %-18s | %-17s | %8.2f | %8.1f | %8.1f | %6.2f | %8.1f |\n", content.c_str(),
              sharer.c_str(), cost.perFrameMs, cost.perSecondMs, cost.framesPerSecond,
              cost.megabits, cost.serverMs);
  std::fflush(stdout);
}

// Ours beside the better peer, as a row of the table of ratios. Where nothing changes ours delivers
// no frame, and what is compared is the time of one second. Where something does, programs that
// can't keep up are not compared: their frames would come from a machine that is too busy.
std::string ratioRow(const Content& content, const Cost& ours, const std::vector<Cost>& peers) {
  const bool moves = !content.client.empty();
  const auto cost = [=](const Cost& of) { return moves ? of.perFrameMs : of.perSecondMs; };
  const auto keepsUp = [](const Cost& of) { return of.framesPerSecond > 0.9 * kFps; };
  std::optional<double> best;
  for (const auto& peer : peers) {
    if (keepsUp(peer)) best = std::min(best.value_or(cost(peer)), cost(peer));
  }
  char row[100];
  if (!best || (moves && !keepsUp(ours))) {
    std::snprintf(row, sizeof row, "| %-18s | the machine was too busy |", content.name.c_str());
  } else {
    std::snprintf(row, sizeof row, "| %-18s | %5.3f, by %s |", content.name.c_str(),
                  cost(ours) / *best, moves ? "frame" : "second");
  }
  return row;
}

struct Options {
  double seconds = 8;
  std::string only;
  int width = 1920;
  int height = 1080;
};

void run(const Options& options) {
  test::PrivateDesktop desktop({.width = options.width, .height = options.height});
  const auto size = std::to_string(options.width) + "x" + std::to_string(options.height);
  std::printf("%s\n\n", size.c_str());
  test::runCommand({besideUs("vlm_bench_content"), "wallpaper"});
  std::printf(
      "| content            | sharer            | ms/frame | ms/s     | frames/s | Mbit/s | server "
      "ms/s |\n");
  std::printf(
      "|--------------------|-------------------|---------:|---------:|---------:|-------:|--------"
      "-:|\n");
  std::vector<std::string> ratios;
  for (const auto& content : contents()) {
    std::optional<test::ChildProcess> client;
    if (!content.client.empty()) client.emplace(content.client);
    std::optional<Cost> ours;
    std::vector<Cost> peers;
    for (const auto& sharer : sharers(desktop.display(), size, options.only)) {
      const Cost cost = measure(sharer, desktop.server().pid(), options.seconds);
      printRow(content.name, sharer.name, cost);
      sharer.name == "ours" ? void(ours = cost) : peers.push_back(cost);
    }
    if (!ours || peers.empty()) continue;
    ratios.push_back(ratioRow(content, *ours, peers));
  }
  std::printf("\n| content            | ours / best peer |\n|---|---:|\n");
  for (const auto& line : ratios) std::printf("%s\n", line.c_str());
}

}  // namespace
}  // namespace vlm::bench

int main(int count, char** arguments) {
  try {
    vlm::bench::Options options;
    if (count > 1) options.seconds = std::atof(arguments[1]);
    if (count > 2) options.only = arguments[2];
    if (count > 4) {
      options.width = std::atoi(arguments[3]);
      options.height = std::atoi(arguments[4]);
    }
    vlm::bench::run(options);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "sharing: %s\n", error.what());
    return 1;
  }
}
