#include "platform/linux/pulse/system_audio.h"

#include <array>
#include <utility>

namespace vlm::platform::pulse {
namespace {

constexpr std::size_t kBlockFrames = 960;
constexpr std::chrono::milliseconds kBlockTime{20};
constexpr std::chrono::seconds kLookAgain{1};
// After a longer sleep of the machine there is nothing to catch up with.
constexpr std::chrono::milliseconds kMostBehind{200};

}  // namespace

SystemAudio::SystemAudio(bool excludesOwnProcess, Sink sink)
    : excludesOwnProcess_(excludesOwnProcess),
      sink_(std::move(sink)),
      thread_([this](const std::stop_token& stop) { run(stop); }) {}

void SystemAudio::run(const std::stop_token& stop) {
  std::array<float, kBlockFrames * kChannels> block{};
  auto due = Clock::now();
  std::unique_lock lock(mutex_);
  while (!wake_.wait_until(lock, stop, due, [&] { return stop.stop_requested(); })) {
    lookForServer(due);
    block.fill(0);
    if (monitors_) monitors_->mixInto(block);
    sink_(block, due - kBlockTime);
    due += kBlockTime;
    if (Clock::now() - due > kMostBehind) due = Clock::now();
  }
}

void SystemAudio::lookForServer(Clock::time_point now) {
  if (monitors_ && !monitors_->isLost()) return;
  monitors_ = nullptr;
  if (now < nextLook_) return;
  nextLook_ = now + kLookAgain;
  monitors_ = StreamMonitors::open(excludesOwnProcess_);
}

}  // namespace vlm::platform::pulse
