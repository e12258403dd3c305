#include "VelmoraMacNative.h"
#include "frame/guard.h"
#include "frame/out.h"
#include "input/hotkey_monitor.h"
#include "input/injection.h"

using vlm::frame::guarded;
using vlm::frame::writeOut;

void vlm_input_mouse_move(double x, double y) {
  guarded([&] { vlm::input::moveMouse({x, y}); });
}

void vlm_input_warp_cursor(double x, double y) {
  guarded([&] { vlm::input::warpCursor({x, y}); });
}

void vlm_input_mouse_button(int32_t button, bool down, double x, double y) {
  guarded([&] { vlm::input::pressMouse(button, down, {x, y}); });
}

void vlm_input_mouse_wheel(double horizontal, double vertical) {
  guarded([&] { vlm::input::scrollWheel(horizontal, vertical); });
}

void vlm_input_key(uint16_t keyCode, bool down, uint64_t flags) {
  guarded([&] { vlm::input::pressKey(keyCode, down, flags); });
}

bool vlm_input_cursor_pos(double* x, double* y) {
  return guarded(false, [&] {
    const auto position = vlm::input::cursorPosition();
    if (!position) return false;
    writeOut(x, position->x);
    writeOut(y, position->y);
    return true;
  });
}

int32_t vlm_frontmost_pid(void) {
  return guarded<int32_t>(0, [] { return vlm::input::frontmostPid(); });
}

bool vlm_hotkey_monitor_start(vlm_hotkey_cb cb) {
  return guarded(false, [&] {
    if (cb == nullptr) return false;
    vlm::input::startHotkeyMonitor(cb);
    return true;
  });
}

void vlm_hotkey_monitor_stop(void) {
  guarded([] { vlm::input::stopHotkeyMonitor(); });
}
