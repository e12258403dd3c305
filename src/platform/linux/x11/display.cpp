#include "platform/linux/x11/display.h"

#include <cstdlib>

#include "platform/linux/x11/reply.h"

namespace vlm::platform::x11 {
namespace {

std::string displayName() {
  const char* name = std::getenv("DISPLAY");
  return name == nullptr ? "" : name;
}

// What no caller waits for here, errors of requests without an answer above all, would pile up.
// Also notices that the server has gone.
void dropEvents(const Connection& connection) {
  while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(connection.get())}) {
  }
}

}  // namespace

Display& Display::shared() {
  static auto* const display =
      new Display();  // never ended: calls may come while the process exits
  return *display;
}

const Connection* Display::ready() {
  if (connection_) dropEvents(*connection_);
  auto name = displayName();
  if (!connection_ || connection_->isLost() || name != name_) {
    name_ = std::move(name);
    connection_ = Connection::open();
    ++generation_;
  }
  return connection_.get();
}

}  // namespace vlm::platform::x11
