#pragma once

#include "VelmoraMacNative.h"

// The process's one pair of key monitors: presses that go to this application and presses that go
// to others, reported as Windows-style virtual-key codes.
namespace vlm::input {

// Replaces whatever ran before. `cb` is never null and is called on the main thread. Off the main
// thread the change is made there a little later, and this returns at once.
void startHotkeyMonitor(vlm_hotkey_cb cb);

// Ends it; does nothing when none runs. Off the main thread as above.
void stopHotkeyMonitor();

}  // namespace vlm::input
