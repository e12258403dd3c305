#include "target_watch.h"

#include "VelmoraMacNative.h"
#include "failure.h"

namespace vlm::tools {

TargetWatch::TargetWatch(MainLoop& loop, std::uint32_t window) {
  try {
    connection_.emplace(loop, [&loop](const xcb_generic_event_t& event) {
      if (typeOf(event) == XCB_DESTROY_NOTIFY) loop.end("the captured window was closed");
    });
  } catch (const Failure&) {
    if (window != 0 || !vlm_screen_capture_ready()) throw;
  }
  if (window == 0) return;
  const std::uint32_t events = XCB_EVENT_MASK_STRUCTURE_NOTIFY;
  xcb_change_window_attributes(connection_->get(), window, XCB_CW_EVENT_MASK, &events);
  connection_->settle();
}

}  // namespace vlm::tools
