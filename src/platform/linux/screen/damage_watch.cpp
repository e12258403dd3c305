#include "platform/linux/screen/damage_watch.h"

#include <xcb/damage.h>
#include <xcb/xfixes.h>

#include "platform/linux/x11/event.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::screen {

DamageWatch::DamageWatch(const x11::Connection& connection, xcb_window_t window)
    : connection_(connection),
      notify_(static_cast<std::uint8_t>(x11::firstEventOf(connection, x11::Extension::damage) +
                                        XCB_DAMAGE_NOTIFY)),
      damage_(xcb_generate_id(connection.get())),
      region_(xcb_generate_id(connection.get())) {
  xcb_damage_create(connection.get(), damage_, window, XCB_DAMAGE_REPORT_LEVEL_NON_EMPTY);
  xcb_xfixes_create_region(connection.get(), region_, 0, nullptr);
}

DamageWatch::~DamageWatch() {
  xcb_xfixes_destroy_region(connection_.get(), region_);
  xcb_damage_destroy(connection_.get(), damage_);
}

bool DamageWatch::handle(const xcb_generic_event_t& event) {
  if (x11::typeOf(event) != notify_) return false;
  const auto& notice = reinterpret_cast<const xcb_damage_notify_event_t&>(event);
  if (notice.damage != damage_) return false;
  isDamaged_ = true;
  return true;
}

void DamageWatch::ask() {
  isDamaged_ = false;
  xcb_damage_subtract(connection_.get(), damage_, XCB_NONE, region_);
  asked_ = xcb_xfixes_fetch_region(connection_.get(), region_).sequence;
}

void DamageWatch::collect(std::vector<x11::Rectangle>& damage) {
  const x11::Reply<xcb_xfixes_fetch_region_reply_t> reply(
      xcb_xfixes_fetch_region_reply(connection_.get(), {asked_}, nullptr));
  if (!reply) return;
  const auto* rectangles = xcb_xfixes_fetch_region_rectangles(reply.get());
  const int count = xcb_xfixes_fetch_region_rectangles_length(reply.get());
  for (int i = 0; i < count; ++i) {
    const auto& each = rectangles[i];
    damage.push_back({each.x, each.y, each.width, each.height});
  }
}

void DamageWatch::forget() {
  isDamaged_ = false;
  xcb_damage_subtract(connection_.get(), damage_, XCB_NONE, XCB_NONE);
}

}  // namespace vlm::platform::screen
