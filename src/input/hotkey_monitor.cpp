#include "input/hotkey_monitor.h"

#include <functional>
#include <memory>
#include <utility>

#include "frame/main_thread.h"
#include "input/key_table.h"
#include "platform/app_kit.h"

namespace vlm::input {
namespace {

using platform::NSEvent;
using platform::NSEventMonitor;

// Touched only on the main thread, where handlers run too: no lock is needed.
class HotkeyMonitor {
 public:
  // Made on first use, and never ended: the host may stop watching while the process exits.
  static HotkeyMonitor& shared() {
    static auto* const monitor = new HotkeyMonitor();
    return *monitor;
  }

  void start(vlm_hotkey_cb cb) {
    stop();
    callback_ = cb;
    _vlmKeyGlobalMonitor = NSEventMonitor::addGlobalMonitorForEventsMatchingMask(
        platform::NSEventMaskKeyDown, [this](const NSEvent& event) { report(event); });
    _vlmKeyLocalMonitor = NSEventMonitor::addLocalMonitorForEventsMatchingMask(
        platform::NSEventMaskKeyDown, [this](const NSEvent& event) {
          report(event);
          return &event;  // the key still reaches the window it was meant for
        });
  }

  void stop() {
    callback_ = nullptr;  // first: nothing is called after this, whatever the platform does
    remove(_vlmKeyGlobalMonitor);
    remove(_vlmKeyLocalMonitor);
  }

 private:
  void report(const NSEvent& event) const {
    // Copied first: the callback may stop or replace the monitor.
    if (const auto callback = callback_) callback(vlmTranslateKey(event.keyCode));
  }

  static void remove(std::shared_ptr<NSEventMonitor>& monitor) {
    if (!monitor) return;
    NSEventMonitor::removeMonitor(monitor);
    monitor = nullptr;  // one that could not be removed is tried again by the next start or stop
  }

  vlm_hotkey_cb callback_ = nullptr;
  std::shared_ptr<NSEventMonitor> _vlmKeyGlobalMonitor;
  std::shared_ptr<NSEventMonitor> _vlmKeyLocalMonitor;
};

}  // namespace

void startHotkeyMonitor(vlm_hotkey_cb cb) {
  frame::onMainThread([cb] { HotkeyMonitor::shared().start(cb); });
}

void stopHotkeyMonitor() {
  frame::onMainThread([] { HotkeyMonitor::shared().stop(); });
}

}  // namespace vlm::input
