#include "platform/linux/portal/remote_desktop.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "platform/linux/portal/sources.h"

namespace vlm::platform::portal {
namespace {

constexpr std::uint32_t kKeyboardAndPointer = 1 | 2;

GVariant* noOptions() {
  Options none;
  return none.take();
}

// Where on a monitor the nearest of its points to this one is, and how far from it.
struct Place {
  double x;
  double y;
  double distance;
};

Place nearest(const x11::Rectangle& frame, double x, double y) {
  const auto within = [](double value, int begin, int length) {
    return std::clamp<double>(value, begin, begin + length - 1);
  };
  const double onX = within(x, frame.x, frame.width), onY = within(y, frame.y, frame.height);
  return {onX - frame.x, onY - frame.y, std::hypot(x - onX, y - onY)};
}

}  // namespace

std::unique_ptr<RemoteDesktop> RemoteDesktop::open(std::string& reason) {
  auto portal = DesktopPortal::reach();
  if (!portal) {
    reason = "the session bus can't be reached";
    return nullptr;
  }
  std::unique_ptr<RemoteDesktop> desktop(new RemoteDesktop(std::move(portal)));
  return desktop->start(reason) ? std::move(desktop) : nullptr;
}

RemoteDesktop::~RemoteDesktop() {
  if (!session_.empty()) portal_->closeSession(session_);
}

// The monitors are part of it: places are said relative to them.
bool RemoteDesktop::start(std::string& reason) {
  session_ = portal_->createSession(kRemoteDesktop);
  reason = "the desktop has no portal that takes input";
  if (session_.empty()) return false;
  const auto session = [this] { return g_variant_new("(o)", session_.c_str()); };
  Options devices, sources, none;
  devices.set("types", kKeyboardAndPointer);
  selectMonitors(sources, true);
  auto answer = portal_->request(kRemoteDesktop, "SelectDevices", session(), devices);
  if (answer) answer = portal_->request(kScreenCast, "SelectSources", session(), sources);
  if (answer) {
    answer = portal_->request(kRemoteDesktop, "Start", g_variant_new("(os)", session_.c_str(), ""),
                              none, Patience::person);
  }
  reason = answer.reason;
  if (!answer) return false;
  guint32 given = 0;
  g_variant_lookup(answer.results.get(), "devices", "u", &given);
  monitors_ = monitorsOf(answer.results.get());
  std::erase_if(monitors_, [](const Monitor& each) { return each.frame.isEmpty(); });
  reason = "the person shares no pointer and keyboard";
  return (given & kKeyboardAndPointer) == kKeyboardAndPointer && !monitors_.empty();
}

bool RemoteDesktop::isGiven() const {
  return portal_->hasSession(session_);
}

void RemoteDesktop::movePointer(double x, double y) const {
  const auto distance = [&](const Monitor& each) { return nearest(each.frame, x, y).distance; };
  const auto& monitor = *std::ranges::min_element(monitors_, {}, distance);
  const auto place = nearest(monitor.frame, x, y);
  portal_->tell(
      kRemoteDesktop, "NotifyPointerMotionAbsolute",
      g_variant_new("(o@a{sv}udd)", session_.c_str(), noOptions(), monitor.node, place.x, place.y));
}

bool RemoteDesktop::pressButton(std::int32_t evdevCode, bool down) const {
  return portal_->call(kRemoteDesktop, "NotifyPointerButton",
                       g_variant_new("(o@a{sv}iu)", session_.c_str(), noOptions(), evdevCode,
                                     static_cast<guint32>(down)));
}

bool RemoteDesktop::turnWheel(Axis axis, std::int32_t steps) const {
  return portal_->call(kRemoteDesktop, "NotifyPointerAxisDiscrete",
                       g_variant_new("(o@a{sv}ui)", session_.c_str(), noOptions(),
                                     static_cast<guint32>(axis), steps));
}

bool RemoteDesktop::pressKey(std::int32_t evdevCode, bool down) const {
  return portal_->call(kRemoteDesktop, "NotifyKeyboardKeycode",
                       g_variant_new("(o@a{sv}iu)", session_.c_str(), noOptions(), evdevCode,
                                     static_cast<guint32>(down)));
}

}  // namespace vlm::platform::portal
