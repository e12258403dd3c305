// How long a sound takes from vlm_audio_out_write to the output's monitor, and what playing costs.
#include <sys/resource.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <memory>
#include <thread>
#include <vector>

#include "VelmoraMacNative.h"
#include "tests/support/private_sound_server.h"
#include "tests/support/tone.h"

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

constexpr int kImpulses = 40;
constexpr std::size_t kCushionFrames = 2880;

struct PipeEnd {
  void operator()(std::FILE* pipe) const { pclose(pipe); }
};
using Pipe = std::unique_ptr<std::FILE, PipeEnd>;

// Reads what the monitor gives until an impulse comes.
Clock::time_point nextImpulse(std::FILE* monitor) {
  std::array<float, 512> piece{};
  ssize_t bytes = 0;
  do {
    piece.fill(0);
    bytes = read(fileno(monitor), piece.data(), sizeof piece);
  } while (bytes > 0 && std::ranges::max(piece) < 0.25F);
  return Clock::now();
}

// Milliseconds from the write of a cushion whose last frame is an impulse to the impulse in the
// monitor. Each time the ring has run dry before.
std::vector<double> latencies() {
  const Pipe monitor(
      popen("parec --device=spk.monitor --rate=48000 --channels=2 --format=float32le "
            "--latency-msec=2",
            "r"));
  void* playback = vlm_audio_out_start("spk", 2);
  std::vector<float> samples(2 * kCushionFrames);
  samples[samples.size() - 2] = samples.back() = 0.5F;
  std::vector<double> result;
  for (int i = 0; i < kImpulses; ++i) {
    Clock::time_point written;
    std::thread writer([&] {
      std::this_thread::sleep_for(milliseconds(300 + 7 * i % 20));
      written = Clock::now();
      vlm_audio_out_write(playback, samples.data(), static_cast<std::int32_t>(samples.size()));
    });
    const auto heard = nextImpulse(monitor.get());
    writer.join();
    result.push_back(std::chrono::duration<double, std::milli>(heard - written).count());
  }
  vlm_audio_out_stop(playback);
  std::ranges::sort(result);
  return result;
}

double cpuSeconds() {
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const auto seconds = [](const timeval& time) {
    return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_usec) * 1e-6;
  };
  return seconds(usage.ru_utime) + seconds(usage.ru_stime);
}

// Processor time of this process in parts of a core while a stereo tone plays.
double playingCost() {
  constexpr int kPieces = 500;
  const auto tone = vlm::test::sine(0.02, {1000, 1000}, 0.25);
  void* playback = vlm_audio_out_start("spk", 2);
  const double before = cpuSeconds();
  auto due = Clock::now();
  for (int i = 0; i < kPieces; ++i) {
    vlm_audio_out_write(playback, tone.data(), static_cast<std::int32_t>(tone.size()));
    std::this_thread::sleep_until(due += milliseconds(20));
  }
  const double spent = cpuSeconds() - before;
  vlm_audio_out_stop(playback);
  return spent / (kPieces * 0.02);
}

}  // namespace

int main() {
  const vlm::test::PrivateSoundServer server;
  const auto sorted = latencies();
  constexpr double kCushionMs = kCushionFrames / 48.0;
  std::printf("| write to monitor, beyond the cushion | ms |\n|---|---:|\n");
  std::printf("| median | %.1f |\n| 95 %% | %.1f |\n", sorted[kImpulses / 2] - kCushionMs,
              sorted[kImpulses * 95 / 100] - kCushionMs);
  std::printf("\nplaying 48 kHz stereo: %.2f %% of a core\n", 100 * playingCost());
}
