#pragma once

#include <xcb/xcb.h>

#include "platform/linux/screen/source.h"

namespace vlm::platform::screen {

// A content that the X server shows, and announces changes of by events.
class X11Source : public Source {
 public:
  // Looks at an event of the connection, for this source or not.
  virtual void handle(const xcb_generic_event_t& event) = 0;
};

}  // namespace vlm::platform::screen
