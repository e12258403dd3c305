#pragma once

#include <sys/types.h>

#include <cstdint>

namespace vlm::bench {

// Nanoseconds of a clock that all processes of the machine share.
std::int64_t monotonicNow();

// Nanoseconds of processor time, user and system, that all threads of a process have spent so far;
// throws when there is no such process.
std::int64_t processorTime(pid_t process);

// Sleeps until a moment of the shared clock.
void sleepUntil(std::int64_t moment);

// Paces a loop: each next() returns at the following of a row of equally spaced moments, and skips
// those that have gone by.
class Pace {
 public:
  explicit Pace(double perSecond);
  void next();

 private:
  std::int64_t interval_;
  std::int64_t due_;
};

}  // namespace vlm::bench
