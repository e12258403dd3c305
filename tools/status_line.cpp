#include "status_line.h"

#include <unistd.h>

#include <cstdio>

#include "library.h"

namespace vlm::tools {
namespace {

using Number = unsigned long long;

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
  // Each time the line begins with a return and ends with "erase to the end", so that it replaces
  // itself.
  std::fprintf(stderr, "\r%.2f Mb/s  key frames %llu", megabits / seconds,
               Number{counts.keyframes});
  if (counts.captured > 0) std::fprintf(stderr, "  captured %llu", Number{counts.captured});
  if (counts.decoded > 0) {
    std::fprintf(stderr, "  shown %llu  dropped %llu  latency %.1f ms", Number{counts.shown},
                 Number{counts.dropped}, counts.latency.percentileMs(0.5));
  }
  std::fputs("\x1b[K", stderr);
}

}  // namespace vlm::tools
