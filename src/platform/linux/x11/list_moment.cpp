#include "platform/linux/x11/list_moment.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace vlm::platform::x11 {
namespace {

using Clock = std::chrono::steady_clock;
constexpr auto kLongestMoment = std::chrono::milliseconds(100);

struct Moment {
  Clock::time_point end;
  std::vector<std::pair<xcb_window_t, Rectangle>> frames;
};

Moment& momentOfThread() {
  thread_local Moment moment;
  return moment;
}

}  // namespace

void keepFramesOfMoment(const std::vector<Window>& listed) {
  Moment moment{Clock::now() + kLongestMoment, {}};
  moment.frames.reserve(listed.size());
  for (const auto& window : listed) moment.frames.emplace_back(window.id, window.frame);
  momentOfThread() = std::move(moment);
}

void useFramesOfMoment(std::vector<Window>& windows) {
  const auto moment = std::exchange(momentOfThread(), {});
  if (Clock::now() > moment.end) return;
  for (auto& window : windows) {
    const auto kept =
        std::ranges::find(moment.frames, window.id, [](const auto& each) { return each.first; });
    if (kept != moment.frames.end()) window.frame = kept->second;
  }
}

}  // namespace vlm::platform::x11
