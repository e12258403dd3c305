#include "platform/linux/screen/damage_watch.h"

#include <xcb/damage.h>

#include "platform/linux/screen/server_region.h"
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
  isDamaged_ |= !isBeforeLastTake(event);
  return true;
}

bool DamageWatch::isBeforeLastTake(const xcb_generic_event_t& event) const {
  return static_cast<std::int32_t>(event.full_sequence - taken_) < 0;  // the numbers wrap around
}

void DamageWatch::ask() {
  take();
  asked_ = xcb_xfixes_fetch_region(connection_.get(), region_).sequence;
}

void DamageWatch::collect(std::vector<x11::Rectangle>& damage) {
  const x11::Reply<xcb_xfixes_fetch_region_reply_t> reply(
      xcb_xfixes_fetch_region_reply(connection_.get(), {asked_}, nullptr));
  if (!reply) return;
  const auto parts = rectanglesIn(*reply);
  damage.insert(damage.end(), parts.begin(), parts.end());
}

void DamageWatch::take() {
  isDamaged_ = false;
  taken_ = xcb_damage_subtract(connection_.get(), damage_, XCB_NONE, region_).sequence;
}

}  // namespace vlm::platform::screen
