#include "platform/linux/screen/display_source.h"

#include <xcb/randr.h>

#include <algorithm>
#include <utility>

#include "platform/linux/x11/event.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/monitors.h"

namespace vlm::platform::screen {

MonitorPlace::MonitorPlace(const x11::Connection& connection, std::uint32_t id,
                           const Rectangle& frame)
    : connection_(connection), id_(id), frame_(frame) {
  if (!x11::supports(connection, x11::Extension::randr)) return;
  xcb_randr_select_input(connection.get(), connection.screen().root,
                         XCB_RANDR_NOTIFY_MASK_SCREEN_CHANGE | XCB_RANDR_NOTIFY_MASK_CRTC_CHANGE);
}

bool MonitorPlace::handle(const xcb_generic_event_t& event) {
  const int type = x11::typeOf(event);
  const int first = x11::firstEventOf(connection_, x11::Extension::randr);
  const bool isNewSetup = first != 0 && (type == first + XCB_RANDR_SCREEN_CHANGE_NOTIFY ||
                                         type == first + XCB_RANDR_NOTIFY);
  // The only sign of a monitor that was declared to be another.
  const bool isNewRoot = type == XCB_CONFIGURE_NOTIFY &&
                         reinterpret_cast<const xcb_configure_notify_event_t&>(event).window ==
                             connection_.screen().root;
  isStale_ |= isNewSetup || isNewRoot;
  return isNewSetup || isNewRoot;
}

void MonitorPlace::refresh() {
  isStale_ = false;
  const auto root = xcb_get_geometry(connection_.get(), connection_.screen().root);
  const auto monitors = x11::listMonitors(connection_);
  const auto ours = std::ranges::find(monitors, id_, &x11::Monitor::id);
  isRemoved_ = ours == monitors.end() && !connection_.isLost();
  frame_ = ours == monitors.end() ? Rectangle{} : ours->frame;
  const x11::Reply<xcb_get_geometry_reply_t> geometry(
      xcb_get_geometry_reply(connection_.get(), root, nullptr));
  if (geometry) frame_ = intersection(frame_, {0, 0, geometry->width, geometry->height});
}

std::optional<std::string> MonitorPlace::ended() const {
  if (!isRemoved_) return std::nullopt;
  return "the captured display was removed";
}

DisplaySource::DisplaySource(const x11::Connection& connection, std::uint32_t id,
                             const Rectangle& frame)
    : connection_(connection),
      place_(connection, id, frame),
      damage_(connection, connection.screen().root),
      reader_(connection) {
  xcb_change_window_attributes(connection.get(), connection.screen().root, XCB_CW_EVENT_MASK,
                               &MonitorPlace::kRootEvents);
}

void DisplaySource::handle(const xcb_generic_event_t& event) {
  if (!damage_.handle(event)) place_.handle(event);
}

void DisplaySource::askChanges() {
  damage_.ask();
  damage_.collect(damaged_);
  isMoved_ = place_.isStale();
  if (isMoved_) place_.refresh();
}

std::vector<Rectangle> DisplaySource::takeChanges() {
  auto damage = std::exchange(damaged_, {});
  if (isMoved_) return {x11::wholeOf(size())};
  const Rectangle frame = place_.frame();
  for (auto& each : damage) each = intersection(each, frame).movedBy(-frame.x, -frame.y);
  return damage;
}

void DisplaySource::read(std::span<const Rectangle> areas, const Receiver& receive) {
  std::vector<ImageReader::Request> requests;
  const Rectangle frame = place_.frame();
  for (const auto& area : areas) {
    requests.push_back({connection_.screen().root, area.movedBy(frame.x, frame.y)});
  }
  const auto views = reader_.read(requests);
  for (std::size_t i = 0; i < views.size(); ++i) {
    if (views[i].pixels != nullptr) receive(i, views[i]);
  }
}

}  // namespace vlm::platform::screen
