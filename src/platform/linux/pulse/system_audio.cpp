#include "platform/linux/pulse/system_audio.h"

#include <array>
#include <exception>
#include <utility>

#include "platform/portable/thread_names.h"

namespace vlm::platform::pulse {
namespace {

using Opening = std::packaged_task<std::unique_ptr<StreamMonitors>()>;

constexpr std::size_t kBlockFrames = 960;
constexpr std::chrono::milliseconds kBlockTime{20};
constexpr std::chrono::seconds kLookAgain{1};
// After a longer sleep of the machine there is nothing to catch up with.
constexpr std::chrono::milliseconds kMostBehind{200};

}  // namespace

SystemAudio::SystemAudio(bool excludesOwnProcess, Sink sink)
    : excludesOwnProcess_(excludesOwnProcess),
      sink_(std::move(sink)),
      thread_(thread_names::kMixture, [this] { run(stop_.get_token()); }) {}

void SystemAudio::run(const std::stop_token& stop) {
  auto due = Clock::now();
  std::unique_lock lock(mutex_);
  while (!wake_.wait_until(lock, stop, due, [&] { return stop.stop_requested(); })) {
    try {
      takeBlock(due);
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): no memory: it is lost
    }
    due += kBlockTime;
    if (Clock::now() - due > kMostBehind) due = Clock::now();
  }
}

void SystemAudio::takeBlock(Clock::time_point end) {
  lookForServer(end);
  std::array<float, kBlockFrames * kChannels> block{};
  if (monitors_) monitors_->mixInto(block);
  sink_(block, end - kBlockTime);
}

void SystemAudio::lookForServer(Clock::time_point now) {
  if (monitors_ && !monitors_->isLost()) return;
  monitors_ = nullptr;
  if (opening_.valid()) {
    if (opening_.wait_for(std::chrono::seconds(0)) != std::future_status::ready) return;
    nextLook_ = now + kLookAgain;
    monitors_ = opening_.get();
  } else if (now >= nextLook_) {
    // A server that does not answer must not hold the blocks up.
    auto open = std::make_shared<Opening>(
        [own = excludesOwnProcess_] { return StreamMonitors::open(own); });
    opening_ = open->get_future();
    opener_ = Thread(thread_names::kSearch, [open] { (*open)(); });
  }
}

}  // namespace vlm::platform::pulse
