#include "platform/linux/screen/x11_feed.h"

#include <utility>

#include "platform/linux/screen/make_source.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::screen {
namespace {

using Event = x11::Reply<xcb_generic_event_t>;

}  // namespace

X11Feed::X11Feed(std::unique_ptr<const x11::Connection> connection,
                 std::shared_ptr<const ContentFilter> filter)
    : connection_(std::move(connection)), filter_(std::move(filter)) {}

Source* X11Feed::open(std::string& reason) {
  source_ = makeSource(*connection_, *filter_, reason);
  return source_.get();
}

void X11Feed::dispatch() {
  while (const Event event{xcb_poll_for_event(connection_->get())}) source_->handle(*event);
}

void X11Feed::dispatchArrived() {
  while (const Event event{xcb_poll_for_queued_event(connection_->get())}) source_->handle(*event);
}

bool X11Feed::prepareToWait() {
  xcb_flush(connection_->get());
  // While it waited for replies or flushed, XCB may have read events that poll() can't see.
  if (const Event event{xcb_poll_for_queued_event(connection_->get())}) {
    source_->handle(*event);
    return false;
  }
  return !connection_->isLost();
}

std::optional<std::string> X11Feed::lost() const {
  if (!connection_->isLost()) return std::nullopt;
  return "the connection to the display was lost";
}

}  // namespace vlm::platform::screen
