#include "platform/linux/screen/capture_loop.h"

#include <poll.h>

#include <algorithm>
#include <utility>

#include "platform/linux/x11/reply.h"

namespace vlm::platform::screen {
namespace {

using Event = x11::Reply<xcb_generic_event_t>;

// How often to look whether the receiver gave a frame back. No event says when it does.
constexpr auto kStarvedPause = std::chrono::milliseconds(4);

}  // namespace

CaptureLoop::CaptureLoop(const x11::Connection& connection, Source& source, FrameComposer& composer,
                         Clock::duration interval, Deliver deliver)
    : connection_(connection),
      source_(source),
      composer_(composer),
      interval_(interval),
      deliver_(std::move(deliver)) {}

std::string CaptureLoop::run() {
  for (;;) {
    handleEvents();
    if (connection_.isLost()) return "the connection to the display was lost";
    const Wake wake = source_.ended() ? Wake() : step(Clock::now());
    if (auto reason = source_.ended()) return *std::move(reason);
    xcb_flush(connection_.get());
    sleep(wake);
  }
}

void CaptureLoop::handleEvents() {
  while (const Event event{xcb_poll_for_event(connection_.get())}) source_.handle(*event);
}

void CaptureLoop::handleQueuedEvents() {
  while (const Event event{xcb_poll_for_queued_event(connection_.get())}) source_.handle(*event);
}

CaptureLoop::Wake CaptureLoop::step(Clock::time_point now) {
  if (!source_.hasChanges() && !composer_.isBehind()) return source_.wakeAt();
  if (now < nextGrab_) return nextGrab_;
  if (!composer_.hasFreeFrame()) return now + kStarvedPause;
  nextGrab_ = now + interval_;
  if (source_.hasChanges()) {
    source_.askChanges();
    handleQueuedEvents();
    const auto changes = source_.takeChanges();
    composer_.setContentSize(source_.size());
    for (const auto& area : changes) composer_.invalidate(area);
  }
  auto picture = composer_.compose(source_);
  // Whatever happened before the pixels were read has been announced by now.
  handleQueuedEvents();
  if (source_.isDoubtful()) {
    composer_.startAnew();
    return now;
  }
  if (picture) deliver_(std::move(picture), now);
  // An event that was handled here does not wake the loop.
  return source_.hasChanges() ? nextGrab_ : source_.wakeAt();
}

void CaptureLoop::sleep(const Wake& wake) const {
  // While it waited for replies or flushed, XCB may have read events that poll() can't see.
  if (const Event event{xcb_poll_for_queued_event(connection_.get())}) {
    source_.handle(*event);
    return;
  }
  if (connection_.isLost()) return;
  pollfd server{connection_.descriptor(), POLLIN, 0};
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
