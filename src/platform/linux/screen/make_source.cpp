#include "platform/linux/screen/make_source.h"

#include "platform/linux/screen/application_source.h"
#include "platform/linux/screen/core_rectangle.h"
#include "platform/linux/screen/display_source.h"
#include "platform/linux/screen/picked_screen.h"
#include "platform/linux/screen/window_source.h"
#include "platform/linux/x11/access.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/visuals.h"

namespace vlm::platform::screen {
namespace {

using x11::Extension;

// Makes the source for each kind of target, or says why it can't.
struct Maker {
  const x11::Connection& connection;
  std::string& reason;

  std::unique_ptr<X11Source> operator()(const DisplayTarget& target) const {
    if (!target.excluding.empty()) {
      return refuse("windows can't be left out of a display on this platform");
    }
    if (x11::isOfWayland(connection)) return refuse(kOfWayland);
    return std::make_unique<DisplaySource>(connection, target.display->displayID,
                                           pixelsOf(target.display->frame));
  }
  std::unique_ptr<X11Source> operator()(const WindowTarget& target) const {
    if (!supports(connection, Extension::composite)) return refuse(kNoComposite);
    // Asked once the source hears of the window's end, so that none goes unheard.
    auto source = std::make_unique<WindowSource>(connection, target.windowID);
    const auto asked = xcb_get_geometry(connection.get(), target.windowID);
    const x11::Reply<xcb_get_geometry_reply_t> window(
        xcb_get_geometry_reply(connection.get(), asked, nullptr));
    if (!window) return refuse("the window was closed");
    if (window->depth != kOpaqueDepth && window->depth != kTranslucentDepth) {
      return refuse("the window's pixels are not of the 32-bit kind");
    }
    return source;
  }
  std::unique_ptr<X11Source> operator()(const ApplicationsTarget& target) const {
    if (target.display->displayID == kPickedDisplay) return refuse(kNoWindow);
    if (!supports(connection, Extension::composite)) return refuse(kNoComposite);
    return std::make_unique<ApplicationSource>(connection, target);
  }

  std::unique_ptr<X11Source> operator()(const PickedTarget&) const {
    return refuse("the picked screen is not the X server's");
  }

  std::unique_ptr<X11Source> refuse(const char* why) const {
    reason = why;
    return nullptr;
  }

  static constexpr const char* kOfWayland =
      "a Wayland session does not show its screen to X11 clients: log in to an X11 session, or "
      "capture a window of an X11 client";
  static constexpr const char* kNoWindow =
      "of an application of a Wayland session only windows that are X11 clients can be captured";
  static constexpr const char* kNoComposite = "the X server lacks the Composite extension";
};

}  // namespace

std::unique_ptr<X11Source> makeSource(const x11::Connection& connection,
                                      const ContentFilter& filter, std::string& reason) {
  if (!x11::hasBlueFirstPixels(connection)) {
    reason = "the X server's pixels are not of the 32-bit kind";
    return nullptr;
  }
  if (!supports(connection, Extension::fixes) || !supports(connection, Extension::damage)) {
    reason = "the X server lacks the Damage extension";
    return nullptr;
  }
  return std::visit(Maker{connection, reason}, filter.target());
}

}  // namespace vlm::platform::screen
