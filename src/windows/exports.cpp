#include <optional>
#include <span>

#include "VelmoraMacNative.h"
#include "frame/guard.h"
#include "frame/out.h"
#include "frame/text.h"
#include "windows/enumeration.h"
#include "windows/lookup.h"
#include "windows/tracker.h"

using vlm::frame::guarded;
using vlm::windows::VlmWindowTracker;

static_assert(sizeof(VlmWindowEntry) == 152, "the record's layout is part of the boundary");

int32_t vlm_window_enumerate(int32_t pid, VlmWindowEntry* out, int32_t capacity) {
  return guarded<int32_t>(0, [&]() -> int32_t {
    if (pid < 1 || out == nullptr || capacity < 1) return -1;
    return vlm::windows::enumerate(pid, {out, static_cast<std::size_t>(capacity)});
  });
}

int32_t vlm_window_find_pid(const char* bundlePrefix) {
  return guarded<int32_t>(
      0, [&] { return vlm::windows::findPid(vlm::frame::textIn(bundlePrefix).value_or("")); });
}

bool vlm_window_get_bounds(uint32_t windowId, double* x, double* y, double* width, double* height) {
  return guarded(false, [&] {
    return vlm::frame::writeRect(vlm::windows::boundsOfWindow(windowId), x, y, width, height);
  });
}

bool vlm_window_focused_bounds(int32_t pid, double* x, double* y, double* width, double* height) {
  return guarded(false, [&] {
    return vlm::frame::writeRect(vlm::windows::focusedBounds(pid), x, y, width, height);
  });
}

void* vlm_window_track(int32_t pid, vlm_track_cb cb, void* user) {
  return guarded<void*>(nullptr, [&]() -> void* {
    if (cb == nullptr || pid < 1) return nullptr;
    auto tracker = VlmWindowTracker::track(pid, cb, user);
    return tracker ? VlmWindowTracker::give(std::move(tracker)) : nullptr;
  });
}

void vlm_window_untrack(void* handle) {
  guarded([&] {
    if (const auto tracker = VlmWindowTracker::takeBack(handle)) tracker->stop();
  });
}
