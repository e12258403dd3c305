#pragma once

#include <cstdint>
#include <memory>
#include <set>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "platform/application_services.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/window_list.h"
#include "platform/linux/x11/window_request.h"

namespace vlm::platform::accessibility {

// Watches one process's windows over its own connection and reports what happened to them. All
// but the making runs on the main thread.
class WindowWatch {
 public:
  // Null when the display can't be reached.
  static std::shared_ptr<WindowWatch> make(std::int32_t pid, AXObserverCallback callback);
  WindowWatch(std::unique_ptr<x11::Connection> connection, std::int32_t pid,
              AXObserverCallback callback);

  int descriptor() const { return connection_->descriptor(); }
  void want(std::string_view notification) { wanted_.emplace(notification); }

  // Takes in every event that is there and reports what they come to: however many moves came,
  // the last place of a window is reported once. True when more has come in meanwhile.
  bool readEvents();

 private:
  struct Watched {
    x11::Rectangle frame;  // as it was last reported
    xcb_window_t topLevel = XCB_NONE;
  };

  void refreshWindows();
  void watch(const x11::Window& window);
  bool belongs(xcb_window_t window);
  void watchTopLevel(xcb_window_t window);
  void noticeMove(xcb_window_t window);
  void refreshActivation();
  void notice(const xcb_generic_event_t& event);
  bool takeEvents();
  void collectChanges();
  void report(std::string_view notification);
  bool isOurs(xcb_window_t window) const { return windows_.contains(window); }

  const std::unique_ptr<x11::Connection> connection_;
  const x11::WindowAtoms atoms_;
  const std::int32_t pid_;
  const AXObserverCallback callback_;
  std::set<std::string, std::less<>> wanted_;
  std::unordered_map<xcb_window_t, Watched> windows_;  // the process's
  xcb_window_t active_ = XCB_NONE;                     // the active window when it is one of ours
  // What the events of one turn call for.
  bool windowsChanged_ = false;
  bool activationChanged_ = false;
  std::set<xcb_window_t> moved_;
  std::set<xcb_window_t> reparented_;
  int destroyed_ = 0;
  std::vector<std::string_view> pending_;
};

}  // namespace vlm::platform::accessibility
