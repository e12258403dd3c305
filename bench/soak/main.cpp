// What the library holds of the system in the long run: ten minutes of sharing a screen with
// itself, and a thousand lives of each kind of object. Arguments: seconds, lives.
#include <glib.h>

#include <cstdio>
#include <cstdlib>
#include <exception>
#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "bench/soak/cycles.h"
#include "bench/soak/loopback.h"
#include "bench/support/clock.h"
#include "bench/support/process_state.h"
#include "support/private_desktop.h"

namespace vlm::bench {
namespace {

constexpr double kInterval = 10;
// Until then caches fill and buffers are made.
constexpr double kSettled = 60;
constexpr int kWarmUpLives = 50;

void wait(double seconds) {
  const std::unique_ptr<GMainLoop, decltype(&g_main_loop_unref)> loop(
      g_main_loop_new(nullptr, FALSE), g_main_loop_unref);
  const auto quit = [](gpointer it) -> gboolean {
    g_main_loop_quit(static_cast<GMainLoop*>(it));
    return G_SOURCE_REMOVE;
  };
  g_timeout_add(static_cast<guint>(seconds * 1000), quit, loop.get());
  g_main_loop_run(loop.get());
}

void printGrowth(const ProcessState& from, const ProcessState& to) {
  std::printf("%+8ld kB %+4ld threads %+4ld descriptors %+4ld segments\n",
              to.residentKb - from.residentKb, to.threads - from.threads,
              to.descriptors - from.descriptors, to.sharedSegments - from.sharedSegments);
  std::fflush(stdout);
}

void soak(double seconds) {
  const Loopback loopback;
  std::printf(
      "| second | resident kB | threads | descriptors | segments | captured | decoded | shown |\n"
      "|-------:|------------:|--------:|------------:|---------:|---------:|--------:|------:|\n");
  std::optional<ProcessState> settled;
  ProcessState state;
  for (double second = kInterval; second <= seconds; second += kInterval) {
    wait(kInterval);
    state = ProcessState::now();
    std::printf("| %6.0f | %11ld | %7ld | %11ld | %8ld | %8llu | %7llu | %5llu |\n", second,
                state.residentKb, state.threads, state.descriptors, state.sharedSegments,
                static_cast<unsigned long long>(loopback.captured()),
                static_cast<unsigned long long>(loopback.decoded()),
                static_cast<unsigned long long>(loopback.shown()));
    std::fflush(stdout);
    if (!settled && second >= kSettled) settled = state;
  }
  if (!settled) return;
  std::printf("\nGrowth after the first minute: ");
  printGrowth(*settled, state);
}

void repeat(const Cycle& cycle, int lives) {
  for (int life = 0; life < kWarmUpLives; ++life) cycle.live();
  const auto before = ProcessState::now();
  for (int life = 0; life < lives; ++life) cycle.live();
  wait(0.2);
  std::printf("Growth over %d lives of a %-10s", lives, cycle.object);
  printGrowth(before, ProcessState::now());
}

void run(double seconds, int lives) {
  const test::PrivateDesktop desktop;
  const std::string content =
      std::filesystem::read_symlink("/proc/self/exe").parent_path() / "vlm_bench_content";
  test::runCommand({content, "wallpaper"});
  const test::ChildProcess window({content, "window", "60"});
  soak(seconds);
  std::printf("\n");
  for (const auto& cycle : kCycles) repeat(cycle, lives);
}

}  // namespace
}  // namespace vlm::bench

int main(int count, char** arguments) {
  try {
    vlm::bench::run(count > 1 ? std::atof(arguments[1]) : 600,
                    count > 2 ? std::atoi(arguments[2]) : 1000);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "soak: %s\n", error.what());
    return 1;
  }
}
