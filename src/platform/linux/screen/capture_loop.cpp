#include "platform/linux/screen/capture_loop.h"

#include <poll.h>

#include <algorithm>
#include <utility>

namespace vlm::platform::screen {
namespace {

// How often to look whether the receiver gave a frame back. Nothing says when it does.
constexpr auto kStarvedPause = std::chrono::milliseconds(4);

}  // namespace

CaptureLoop::CaptureLoop(Feed& feed, Source& source, FrameComposer& composer,
                         Clock::duration interval, Deliver deliver)
    : feed_(feed),
      source_(source),
      composer_(composer),
      interval_(interval),
      deliver_(std::move(deliver)) {}

std::string CaptureLoop::run() {
  for (;;) {
    feed_.dispatch();
    if (auto reason = feed_.lost()) return *std::move(reason);
    const Wake wake = source_.ended() ? Wake() : step(Clock::now());
    if (auto reason = source_.ended()) return *std::move(reason);
    if (feed_.prepareToWait()) sleep(wake);
  }
}

CaptureLoop::Wake CaptureLoop::step(Clock::time_point now) {
  if (!source_.hasChanges() && !composer_.isBehind()) return source_.wakeAt();
  if (now < nextGrab_) return nextGrab_;
  if (!composer_.hasFreeFrame()) return now + kStarvedPause;
  nextGrab_ = now + interval_;
  if (source_.hasChanges()) {
    source_.askChanges();
    feed_.dispatchArrived();
    const auto changes = source_.takeChanges();
    composer_.setContentSize(source_.size());
    for (const auto& area : changes) composer_.invalidate(area);
  }
  auto picture = composer_.compose(source_);
  // Whatever happened before the pixels were read has been announced by now.
  feed_.dispatchArrived();
  if (source_.isDoubtful()) {
    composer_.startAnew();
    return now;
  }
  if (picture) deliver_(std::move(picture), now);
  // What was dispatched here does not wake the loop.
  return source_.hasChanges() ? nextGrab_ : source_.wakeAt();
}

void CaptureLoop::sleep(const Wake& wake) const {
  pollfd server{feed_.descriptor(), POLLIN, 0};
  if (!wake) {
    poll(&server, 1, -1);
    return;
  }
  const auto left = std::max(*wake - Clock::now(), Clock::duration::zero());
  const auto seconds = std::chrono::duration_cast<std::chrono::seconds>(left);
  const timespec limit{seconds.count(), std::chrono::nanoseconds(left - seconds).count()};
  ppoll(&server, 1, &limit, nullptr);
}

}  // namespace vlm::platform::screen
