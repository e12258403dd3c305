#pragma once

#include "bench/latency/sightings.h"

namespace vlm::bench {

// The ways from the screen to decoded pictures. Each looks at the display that DISPLAY names for
// so many seconds after a warm-up, and throws when it does not run.
Latencies measureOurs(int fps, double seconds);
Latencies measureGStreamer(int fps, double seconds);
Latencies measureFfmpegPair(int fps, double seconds);

inline constexpr int kBitrate = 8'000'000;
inline constexpr int kScreenWidth = 1920;
inline constexpr int kScreenHeight = 1080;

// The moment at which a path that starts now is warm.
std::int64_t warmAt();
// Returns so many seconds after that moment.
void watch(std::int64_t warm, double seconds);

}  // namespace vlm::bench
