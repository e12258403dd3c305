#pragma once

#include <cstdint>

#include "counts.h"
#include "main_loop.h"

namespace vlm::tools {

// A line on the terminal that follows the counts while a main loop runs; nothing elsewhere.
class StatusLine {
 public:
  StatusLine(MainLoop& loop, SharedCounts& counts);
  // Leaves the terminal at the start of a fresh line.
  ~StatusLine();
  StatusLine(const StatusLine&) = delete;
  StatusLine& operator=(const StatusLine&) = delete;

 private:
  void update();

  SharedCounts& counts_;
  const bool onTerminal_;
  std::int64_t lastTime_;
  std::uint64_t lastBytes_ = 0;
};

}  // namespace vlm::tools
