#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/av_foundation.h"
#include "platform/core_graphics.h"
#include "platform/foundation.h"

namespace vlm::platform {

// An archive that a view could be read from.
class NSCoder;

// A view that the host places in a window of its own. The library derives from it. Made and
// changed on the main thread; its last reference, a std::shared_ptr's, may go on any.
class NSView : public std::enable_shared_from_this<NSView> {
 public:
  NSView(const NSView&) = delete;
  NSView& operator=(const NSView&) = delete;
  virtual ~NSView();

  // The view that takes a mouse event at `point`, null for none.
  virtual NSView* hitTest(CGPoint point);
  // The platform calls these when the view comes into another window, or its window's scale
  // changes; overrides call the base's first.
  virtual void viewDidMoveToWindow();
  virtual void viewDidChangeBackingProperties();

  void setLayer(std::shared_ptr<AVSampleBufferDisplayLayer> layer);
  void setWantsLayer(bool wanted);
  CGRect bounds() const;
  // The backingScaleFactor of the view's window; nothing while it is in none.
  std::optional<double> windowBackingScaleFactor() const;
  void removeFromSuperview();

  // What the host is given to place the view with: the platform's own view, or a
  // pointer that represents it. Lives as long as the view; what is at the pointer is up to date
  // when this returns.
  void* hostPointer() const;

 protected:
  NSView();
  // The base initialiser, called when the view is shared already: the platform keeps it weakly, for
  // the calls below. False when the platform can't make a view.
  bool initWithFrame(CGRect frame);

 private:
  struct Impl;
  std::unique_ptr<Impl> impl_;
};

// The backingScaleFactor of NSScreen's mainScreen; nothing when there is no screen.
std::optional<double> mainScreenBackingScaleFactor();

// The settings page for security and privacy; the query part names the section to show.
inline constexpr std::string_view kPrivacySettingsURL =
    "x-apple.systempreferences:com.apple.preference.security";

struct NSRunningApplication {
  std::optional<std::string> bundleIdentifier;
  std::int32_t processIdentifier = 0;
};

// NSWorkspace's sharedWorkspace. Any thread.
class NSWorkspace {
 public:
  // False when nothing on this system opens it.
  static bool openURL(const NSURL& url);
  // In no promised order.
  static std::vector<NSRunningApplication> runningApplications();
  static std::optional<NSRunningApplication> frontmostApplication();
};

// A key press.
struct NSEvent {
  std::uint16_t keyCode = 0;  // a macOS virtual key code
};

using NSEventMask = std::uint64_t;
inline constexpr NSEventMask NSEventMaskKeyDown = 1 << 10;

// Watches key presses, auto-repeats included; presses of modifiers alone are none. Main thread:
// monitors are added and removed there, and handlers run there.
class NSEventMonitor {
 public:
  // Presses that go to other applications. Null when the system refuses.
  static std::shared_ptr<NSEventMonitor> addGlobalMonitorForEventsMatchingMask(
      NSEventMask mask, std::function<void(const NSEvent&)> handler);
  // Presses that go to this one. What the handler returns goes on to the window; null goes
  // nowhere.
  static std::shared_ptr<NSEventMonitor> addLocalMonitorForEventsMatchingMask(
      NSEventMask mask, std::function<const NSEvent*(const NSEvent&)> handler);
  // No handler runs after this.
  static void removeMonitor(const std::shared_ptr<NSEventMonitor>& monitor);

  virtual ~NSEventMonitor() = default;
};

}  // namespace vlm::platform
