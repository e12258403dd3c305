#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "platform/linux/portal/desktop_portal.h"
#include "platform/linux/x11/rectangle.h"

namespace vlm::platform::portal {

// A monitor that a person chose to share.
struct Monitor {
  std::uint32_t node = 0;  // PipeWire's
  x11::Rectangle frame;    // in points of the whole desktop; empty where the desktop does not say
};

// The monitors that a session's start was answered with.
std::vector<Monitor> monitorsOf(GVariant* results);

// A screen that is being shared. The desktop shows that it is until this goes.
class ScreenCast {
 public:
  // Asks for one monitor. A person is asked unless they agreed before; there is no limit to how
  // long they think about it, and one is asked at a time. Null and why when there is nothing to
  // share.
  static std::unique_ptr<ScreenCast> open(std::string& reason);
  ~ScreenCast();
  ScreenCast(const ScreenCast&) = delete;
  ScreenCast& operator=(const ScreenCast&) = delete;

  const Monitor& monitor() const { return monitor_; }
  // A connection to PipeWire that shows this screen alone; the caller's, -1 when there is none.
  int openRemote() const;

 private:
  explicit ScreenCast(std::unique_ptr<DesktopPortal> portal) : portal_(std::move(portal)) {}
  bool start(std::string& reason);

  const std::unique_ptr<DesktopPortal> portal_;
  std::string session_;
  Monitor monitor_;
};

}  // namespace vlm::platform::portal
