#pragma once

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <list>
#include <map>
#include <mutex>
#include <stop_token>
#include <string>
#include <thread>
#include <type_traits>

namespace vlm::test {

// Keeps the time of every call of the library. One that does not come back ends the process, which
// names it.
class BoundedCalls {
 public:
  using Clock = std::chrono::steady_clock;
  // The longest limit of the library is a few seconds; sanitizers and a busy machine take the rest.
  static constexpr std::chrono::seconds kBound{10};

  template <class Function>
  auto run(const char* name, Function function) {
    const Running running(*this, name);
    return function();
  }

  // The longest call of each name that took more than a second.
  void printSlow() {
    const std::lock_guard lock(mutex_);
    for (const auto& [name, longest] : longest_) {
      const auto seconds = std::chrono::duration<double>(longest).count();
      if (seconds > 1) std::printf("longest %s: %.1f s\n", name.c_str(), seconds);
    }
  }

 private:
  struct Call {
    const char* name;
    Clock::time_point since;
  };
  struct Running {
    Running(BoundedCalls& in, const char* name) : all(in) {
      const std::lock_guard lock(all.mutex_);
      place = all.running_.insert(all.running_.end(), {name, Clock::now()});
    }
    ~Running() {
      const std::lock_guard lock(all.mutex_);
      auto& longest = all.longest_[place->name];
      longest = std::max(longest, Clock::now() - place->since);
      all.running_.erase(place);
    }
    Running(const Running&) = delete;
    Running& operator=(const Running&) = delete;

    BoundedCalls& all;
    std::list<Call>::iterator place;
  };

  void watch(const std::stop_token& stop) {
    for (; !stop.stop_requested(); std::this_thread::sleep_for(std::chrono::milliseconds(100))) {
      const std::lock_guard lock(mutex_);
      for (const auto& call : running_) {
        if (Clock::now() - call.since < kBound) continue;
        std::fprintf(stderr, "torture: %s does not come back\n", call.name);
        std::abort();
      }
    }
  }

  std::mutex mutex_;
  std::list<Call> running_;
  std::map<std::string, Clock::duration> longest_;
  std::jthread watcher_{[this](const std::stop_token& stop) { watch(stop); }};
};

}  // namespace vlm::test
