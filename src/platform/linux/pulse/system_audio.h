#pragma once

#include <chrono>
#include <condition_variable>
#include <functional>
#include <future>
#include <memory>
#include <mutex>
#include <span>
#include <stop_token>

#include "platform/linux/pulse/stream_monitors.h"
#include "platform/portable/thread.h"

namespace vlm::platform::pulse {

// What the machine plays, mixed to stereo at 48 kHz, in blocks at an even pace. Where nothing
// plays, or no server runs, it is silence; a server that comes, or comes back, is found.
class SystemAudio {
 public:
  static constexpr std::size_t kChannels = 2;
  static constexpr std::size_t kSampleRate = 48000;

  using Clock = std::chrono::steady_clock;
  // Gets every block, and the time at which it began, on a thread of this object.
  using Sink = std::function<void(std::span<const float> samples, Clock::time_point time)>;

  SystemAudio(bool excludesOwnProcess, Sink sink);
  ~SystemAudio() { stop_.request_stop(); }
  SystemAudio(const SystemAudio&) = delete;
  SystemAudio& operator=(const SystemAudio&) = delete;

 private:
  void run(const std::stop_token& stop);
  void takeBlock(Clock::time_point end);
  void lookForServer(Clock::time_point now);

  const bool excludesOwnProcess_;
  const Sink sink_;
  // Of the thread alone.
  std::unique_ptr<StreamMonitors> monitors_;
  std::future<std::unique_ptr<StreamMonitors>> opening_;
  Clock::time_point nextLook_;
  std::mutex mutex_;
  std::condition_variable_any wake_;
  Thread opener_;
  std::stop_source stop_;
  Thread thread_;  // ended first: it uses all the others
};

}  // namespace vlm::platform::pulse
