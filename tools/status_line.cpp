#include "status_line.h"

#include <unistd.h>

#include <cstdio>

#include "library.h"

namespace vlm::tools {
namespace {

constexpr std::chrono::milliseconds kInterval{500};

}  // namespace

StatusLine::StatusLine(MainLoop& loop, SharedCounts& counts)
    : counts_(counts), onTerminal_(isatty(STDERR_FILENO) == 1), lastTime_(monotonicNow()) {
  if (onTerminal_) loop.every(kInterval, [this] { update(); });
}

StatusLine::~StatusLine() {
  if (onTerminal_) std::fputs("\r\x1b[K", stderr);
}

void StatusLine::update() {
  const Counts counts = counts_.now();
  const std::int64_t now = monotonicNow();
  const double megabits = static_cast<double>(counts.bytes - lastBytes_) * 8e-6;
  const double seconds = static_cast<double>(now - lastTime_) * 1e-9;
  lastTime_ = now;
  lastBytes_ = counts.bytes;
  // The line begins with a return and ends with "erase to the end", so that it replaces itself.
  std::fprintf(stderr,
               "\rcaptured %llu  shown %llu  dropped %llu  %.2f Mb/s  key frames %llu  "
               "latency %.1f ms\x1b[K",
               static_cast<unsigned long long>(counts.captured),
               static_cast<unsigned long long>(counts.shown),
               static_cast<unsigned long long>(counts.dropped), megabits / seconds,
               static_cast<unsigned long long>(counts.keyframes), counts.latency.percentileMs(0.5));
}

}  // namespace vlm::tools
