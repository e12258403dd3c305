#include "platform/linux/input/key_monitors.h"

#include <unistd.h>

#include <algorithm>
#include <functional>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/glib/log_line.h"
#include "platform/linux/input/key_recorder.h"
#include "platform/linux/input/keyboard.h"
#include "platform/linux/session/session_type.h"
#include "platform/linux/x11/display.h"
#include "platform/linux/x11/window_list.h"

namespace vlm::platform::input {
namespace {

using x11::Display;

struct Monitor final : NSEventMonitor {
  Monitor(bool isLocal, std::function<void(const NSEvent&)> whenPressed)
      : local(isLocal), handler(std::move(whenPressed)) {}

  const bool local;  // presses that go to this process are reported, or all others
  const std::function<void(const NSEvent&)> handler;
  bool removed = false;
};

// A press of a modifier by itself is not reported.
std::optional<NSEvent> keyPress(xcb_keycode_t keycode) {
  using Answer = std::optional<NSEvent>;
  return Display::shared().with<Answer>(std::nullopt, [&](const x11::Connection& connection) {
    const auto keyboard = Keyboard::ask(connection);
    if (!keyboard || keyboard->isModifier(keycode)) return Answer();
    const auto macKeyCode = keyboard->macKeyCodeOf(keycode);
    return macKeyCode ? Answer(NSEvent{*macKeyCode}) : Answer();
  });
}

// Whether the keyboard is with a window of this process.
bool hasKeyboard() {
  return Display::shared().with<bool>(false, [](const x11::Connection& connection) {
    const auto active = x11::activeWindow(connection);
    if (active == XCB_NONE) return false;
    const auto window = x11::describeWindow(connection, active);
    return window && window->processId == getpid();
  });
}

// One recorder for all monitors: whose a press is gets decided once, so that a local and a global
// monitor never both report it, or neither. Main thread only.
class Monitors {
 public:
  static Monitors& shared() {
    static auto* const monitors = new Monitors();
    return *monitors;
  }

  std::shared_ptr<Monitor> add(bool local, std::function<void(const NSEvent&)> handler) {
    if (!recorder_) {
      recorder_ = KeyRecorder::start([this](xcb_keycode_t keycode) { report(keycode); });
      if (!recorder_) return nullptr;
    }
    all_.push_back(std::make_shared<Monitor>(local, std::move(handler)));
    return all_.back();
  }

  void remove(Monitor& monitor) {
    monitor.removed = true;
    std::erase_if(all_, [&](const auto& each) { return each.get() == &monitor; });
    if (all_.empty()) recorder_.reset();
  }

 private:
  void report(xcb_keycode_t keycode) {
    const auto event = keyPress(keycode);
    if (!event) return;
    const bool ours = hasKeyboard();
    const auto now = all_;  // a copy: handlers add and remove monitors
    for (const auto& each : now) {
      if (!each->removed && each->local == ours) each->handler(*event);
    }
  }

  std::vector<std::shared_ptr<Monitor>> all_;
  std::unique_ptr<KeyRecorder> recorder_;
};

}  // namespace

std::shared_ptr<NSEventMonitor> addKeyMonitor(bool local,
                                              std::function<void(const NSEvent&)> handler) {
  if (session::isWayland()) {
    glib::writeLogLineOnce(
        "[vlm] in a Wayland session hot keys are seen only while an X11 client has the keyboard");
  }
  return Monitors::shared().add(local, std::move(handler));
}

void removeKeyMonitor(NSEventMonitor& monitor) {
  if (auto* ours = dynamic_cast<Monitor*>(&monitor)) Monitors::shared().remove(*ours);
}

}  // namespace vlm::platform::input
