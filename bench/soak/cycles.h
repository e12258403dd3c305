#pragma once

namespace vlm::bench {

// A whole life of one kind of object, put to use once.
struct Cycle {
  const char* object;
  void (*live)();
};

extern const Cycle kCycles[4];

// Lets the main loop do what has been left for it.
void settleMainLoop();

}  // namespace vlm::bench
