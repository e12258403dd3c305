#include "bench/support/clock.h"

#include <cerrno>
#include <ctime>
#include <stdexcept>

namespace vlm::bench {
namespace {

constexpr std::int64_t kSecond = 1'000'000'000;

std::int64_t read(clockid_t clock) {
  timespec time{};
  if (clock_gettime(clock, &time) != 0) throw std::runtime_error("a clock can't be read");
  return time.tv_sec * kSecond + time.tv_nsec;
}

}  // namespace

std::int64_t monotonicNow() {
  return read(CLOCK_MONOTONIC);
}

std::int64_t processorTime(pid_t process) {
  clockid_t clock{};
  if (clock_getcpuclockid(process, &clock) != 0) throw std::runtime_error("a process has gone");
  return read(clock);
}

void sleepUntil(std::int64_t moment) {
  const timespec time{moment / kSecond, moment % kSecond};
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr) == EINTR) {
  }
}

Pace::Pace(double perSecond)
    : interval_(static_cast<std::int64_t>(static_cast<double>(kSecond) / perSecond)),
      due_(monotonicNow()) {}

void Pace::next() {
  const auto now = monotonicNow();
  due_ += interval_;
  if (due_ < now) due_ += (now - due_) / interval_ * interval_ + interval_;
  sleepUntil(due_);
}

}  // namespace vlm::bench
