#pragma once

#include <xcb/xcb.h>

namespace vlm::platform::x11 {

// What happened, without the bit that marks an event as sent by another program.
template <class Event>
int typeOf(const Event& event) {
  return event.response_type & 0x7F;
}

}  // namespace vlm::platform::x11
