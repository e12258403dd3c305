#include "platform/cg_event.h"

#include <cmath>

#include "platform/linux/glib/log_line.h"
#include "platform/linux/input/event.h"
#include "platform/linux/input/portal_poster.h"
#include "platform/linux/input/poster.h"
#include "platform/linux/session/session_type.h"
#include "platform/linux/x11/display.h"
#include "platform/linux/x11/reply.h"
#include "platform/portable/object.h"

namespace vlm::platform {

class CGEvent final : public input::Event {
 public:
  using Event::Event;
};

namespace {

using x11::Display;

// Used only under the display's lock.
input::Poster& poster() {
  static auto* const poster = new input::Poster();
  return *poster;
}

bool isPlace(CGPoint position) {
  return std::isfinite(position.x) && std::isfinite(position.y);
}

}  // namespace

// A Wayland desktop does not say where its pointer is.
Ref<CGEvent> CGEventCreate() {
  if (session::isWayland()) {
    glib::writeLogLineOnce("[vlm] a Wayland desktop does not say where its pointer is");
    return nullptr;
  }
  return Display::shared().with<Ref<CGEvent>>(nullptr, [](const x11::Connection& connection) {
    const auto asked = xcb_query_pointer(connection.get(), connection.screen().root);
    const x11::Reply<xcb_query_pointer_reply_t> reply(
        xcb_query_pointer_reply(connection.get(), asked, nullptr));
    if (!reply) return Ref<CGEvent>();
    return makeRef<CGEvent>(std::monostate{},
                            CGPoint{double(reply->root_x), double(reply->root_y)});
  });
}

Ref<CGEvent> CGEventCreateMouseEvent(CGEventType type, CGPoint position, CGMouseButton) {
  if (!isPlace(position)) return nullptr;
  return makeRef<CGEvent>(input::MouseInput{type, position}, position);
}

Ref<CGEvent> CGEventCreateScrollWheelEvent2(CGScrollEventUnit, std::uint32_t, std::int32_t wheel1,
                                            std::int32_t wheel2, std::int32_t) {
  return makeRef<CGEvent>(input::ScrollInput{wheel1, wheel2});
}

Ref<CGEvent> CGEventCreateKeyboardEvent(std::uint16_t keyCode, bool keyDown) {
  return makeRef<CGEvent>(input::KeyInput{keyCode, keyDown});
}

void CGEventSetFlags(CGEvent& event, CGEventFlags flags) {
  event.flags = flags;
}

CGPoint CGEventGetLocation(const CGEvent& event) {
  return event.location;
}

void CGEventPost(CGEventTapLocation, CGEvent& event) {
  if (session::isWayland()) {
    input::PortalPoster::shared().post(event);
    return;
  }
  auto& display = Display::shared();
  display.with<bool>(false, [&](const x11::Connection& connection, unsigned generation) {
    poster().post(connection, generation, event);
    return true;
  });
}

CGError CGWarpMouseCursorPosition(CGPoint position) {
  if (!isPlace(position)) return kCGErrorIllegalArgument;
  if (session::isWayland()) {  // it knows no other way to put the pointer somewhere
    const input::Event move(input::MouseInput{CGEventType::mouseMoved, position});
    return input::PortalPoster::shared().post(move) ? kCGErrorSuccess : kCGErrorFailure;
  }
  return Display::shared().with<CGError>(kCGErrorFailure, [&](const x11::Connection& connection) {
    xcb_warp_pointer(connection.get(), XCB_NONE, connection.screen().root, 0, 0, 0, 0,
                     input::coordinate(position.x), input::coordinate(position.y));
    xcb_flush(connection.get());
    return kCGErrorSuccess;
  });
}

// X never separates the two.
CGError CGAssociateMouseAndMouseCursorPosition(bool) {
  return kCGErrorSuccess;
}

}  // namespace vlm::platform
