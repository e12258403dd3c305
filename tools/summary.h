#pragma once

#include <string>

#include "counts.h"
#include "main_loop.h"

namespace vlm::tools {

// What is printed of a run at its end.
struct Summary {
  std::string command;
  std::string source;  // what was captured or played
  double seconds = 0;
  double cpuSeconds = 0;
  Counts counts;
  Ending ending;
};

// What this process has spent so far, all threads together.
double cpuSecondsSoFar();

std::string asText(const Summary& summary);
std::string asJson(const Summary& summary);

}  // namespace vlm::tools
