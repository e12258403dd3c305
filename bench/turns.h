#pragma once

#include <benchmark/benchmark.h>
#include <time.h>

#include <algorithm>
#include <functional>
#include <string>
#include <utility>
#include <vector>

namespace vlm::bench {

// Contenders that do the same work and take turns, so that whatever else the machine does meanwhile
// meets all of them alike. The first one is ours. Each counter is the median of the CPU time of one
// thread; "/name" is ours in parts of that contender's.
class Turns {
 public:
  explicit Turns(benchmark::State& state) : state_(state) {}

  // `run` is given the number of the turn, to rotate its buffers by.
  void add(std::string name, std::function<void(std::size_t turn)> run) {
    contenders_.push_back({std::move(name), std::move(run), {}});
  }

  // With `bytes` handled in each turn the counters are bytes a second, otherwise seconds.
  void run(double bytes = 0) {
    std::size_t turn = 0;
    for (auto& contender : contenders_) contender.run(turn++);
    for (auto _ : state_) {
      for (auto& contender : contenders_) {
        const double begin = threadTime();
        contender.run(turn++);
        contender.seconds.push_back(threadTime() - begin);
      }
      state_.SetIterationTime(contenders_.front().seconds.back());
    }
    const double ours = median(contenders_.front().seconds);
    for (auto& contender : contenders_) {
      const double theirs = median(contender.seconds);
      state_.counters[contender.name] = bytes > 0 ? bytes / theirs : theirs;
      if (&contender != &contenders_.front()) state_.counters["/" + contender.name] = ours / theirs;
    }
  }

 private:
  struct Contender {
    std::string name;
    std::function<void(std::size_t)> run;
    std::vector<double> seconds;
  };

  static double threadTime() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
  }

  static double median(std::vector<double> values) {
    const auto middle = values.begin() + static_cast<std::ptrdiff_t>(values.size() / 2);
    std::nth_element(values.begin(), middle, values.end());
    return *middle;
  }

  benchmark::State& state_;
  std::vector<Contender> contenders_;
};

}  // namespace vlm::bench
