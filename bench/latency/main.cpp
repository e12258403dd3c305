// The time from a change on the screen to the decoded frame that shows it: of the library, of a
// GStreamer pipeline in one process and of two FFmpeg programs, one after the other on the same
// contents in the same X server.
#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "bench/latency/paths.h"
#include "bench/support/clock.h"
#include "support/private_desktop.h"

namespace vlm::bench {

std::int64_t warmAt() {
  return monotonicNow() + 2'000'000'000;
}

void watch(std::int64_t warm, double seconds) {
  sleepUntil(warm + static_cast<std::int64_t>(seconds * 1e9));
}

namespace {

struct Path {
  const char* name;
  Latencies (*measure)(int fps, double seconds);
};

constexpr Path kPaths[] = {
    {"ours", measureOurs}, {"GStreamer", measureGStreamer}, {"FFmpeg pair", measureFfmpegPair}};

struct Case {
  const char* content;
  int fps;
  double changesPerFrame;
};

// Changes a little slower than frames fall on every moment between two grabs of a program that
// grabs by the clock. With changes twice as fast every grab sees a fresh one, and little is
// compared but the work itself.
constexpr double kSlower = 0.97;
constexpr double kFaster = 1.94;
constexpr Case kCases[] = {
    {"clock", 30, kSlower},        {"clock", 60, kSlower},        {"moving-clock", 30, kSlower},
    {"moving-clock", 60, kSlower}, {"clock", 30, kFaster},        {"clock", 60, kFaster},
    {"moving-clock", 30, kFaster}, {"moving-clock", 60, kFaster},
};

std::string program(const char* name) {
  return (std::filesystem::read_symlink("/proc/self/exe").parent_path() / name).string();
}

void printRow(const Case& of, const char* path, const Latencies& result, double ours) {
  const bool isGStreamer = std::string(path) == "GStreamer" && ours > 0 && result.frames > 0;
  const std::string ratio = isGStreamer ? std::to_string(ours / result.medianMs).substr(0, 5) : "";
  std::printf("| %-12s | %3d | %9.0f | %-11s | %9.1f | %6.1f | %6zu | %10zu | %12s |\n", of.content,
              of.fps, of.fps * of.changesPerFrame, path, result.medianMs, result.p95Ms,
              result.frames, result.unreadable, ratio.c_str());
  std::fflush(stdout);
}

void run(double seconds, const std::string& only) {
  const test::PrivateDesktop desktop;
  const std::string content = program("vlm_bench_content");
  test::runCommand({content, "wallpaper"});
  std::printf(
      "| content      | fps | changes/s | path        | median ms | p95 ms | frames | unreadable "
      "| to GStreamer |\n"
      "|--------------|----:|----------:|-------------|----------:|-------:|-------:|-----------:"
      "|-------------:|\n");
  for (const auto& each : kCases) {
    const test::ChildProcess clock(
        {content, each.content, std::to_string(each.fps * each.changesPerFrame)});
    double ours = 0;
    for (const auto& [name, measure] : kPaths) {
      if (!std::string(name).starts_with(only)) continue;
      const auto result = measure(each.fps, seconds);
      if (std::string(name) == "ours") ours = result.medianMs;
      printRow(each, name, result, ours);
    }
  }
}

}  // namespace
}  // namespace vlm::bench

int main(int count, char** arguments) {
  try {
    vlm::bench::run(count > 1 ? std::atof(arguments[1]) : 8, count > 2 ? arguments[2] : "");
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "latency: %s\n", error.what());
    return 1;
  }
}
