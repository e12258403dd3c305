#include "run.h"

#include <chrono>
#include <cstdio>
#include <exception>
#include <utility>

#include "library.h"
#include "status_line.h"
#include "summary.h"

namespace vlm::tools {
namespace {

std::chrono::milliseconds milliseconds(double seconds) {
  return std::chrono::duration_cast<std::chrono::milliseconds>(
      std::chrono::duration<double>(seconds));
}

Ending runLoop(const RunOptions& options, MainLoop& loop, SharedCounts& counts) {
  const StatusLine status(loop, counts);
  if (options.seconds > 0) {
    loop.after(milliseconds(options.seconds), [&loop] { loop.end("time is up"); });
  }
  return loop.run();
}

}  // namespace

void scheduleChanges(const ShareOptions& options, MainLoop& loop, Sharer& sharer) {
  if (options.keyframeEvery > 0) {
    loop.every(milliseconds(options.keyframeEvery), [&sharer] { sharer.requestKeyframe(); });
  }
  for (const auto& [rate, second] : options.bitRateChanges) {
    loop.after(milliseconds(second), [&sharer, next = rate] { sharer.setBitRate(next); });
  }
  for (const auto& [size, second] : options.maxSizeChanges) {
    loop.after(milliseconds(second), [&sharer, limit = size] { sharer.setMaxSize(limit); });
  }
}

int runAndTell(const Task& task, const RunOptions& options, MainLoop& loop, SharedCounts& counts,
               const std::function<void()>& windDown) {
  const auto start = monotonicNow();
  Summary summary;
  summary.command = task.command;
  summary.source = task.source;
  summary.ending = runLoop(options, loop, counts);
  summary.seconds = static_cast<double>(monotonicNow() - start) * 1e-9;
  summary.cpuSeconds = cpuSecondsSoFar();
  try {
    windDown();
  } catch (const std::exception& error) {
    if (!summary.ending.failed) summary.ending = {error.what(), true};
  }
  summary.counts = counts.now();
  std::fputs((options.json ? asJson(summary) : asText(summary)).c_str(), stdout);
  if (summary.ending.failed) std::fprintf(stderr, "vlm: %s\n", summary.ending.reason.c_str());
  return summary.ending.failed ? 1 : 0;
}

}  // namespace vlm::tools
