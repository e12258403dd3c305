#pragma once

#include <functional>
#include <string>

#include "counts.h"
#include "main_loop.h"
#include "options.h"
#include "sharer.h"

namespace vlm::tools {

// Makes the key frames and changes that the options ask for happen while the loop runs.
void scheduleChanges(const ShareOptions& options, MainLoop& loop, Sharer& sharer);

// What a command does, as its summary names it.
struct Task {
  std::string command;
  std::string source;
};

// Runs the loop until it ends, calls `windDown`, and prints how it went: the summary on standard
// output, a failure on standard error. Returns the exit status of the program.
int runAndTell(const Task& task, const RunOptions& options, MainLoop& loop, SharedCounts& counts,
               const std::function<void()>& windDown);

}  // namespace vlm::tools
