#pragma once

#include <vector>

#include "platform/cg_event.h"
#include "platform/linux/input/keyboard.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::input {

// Presses or releases a key through XTEST.
void fakeKey(const x11::Connection& connection, xcb_keycode_t key, bool down);

// While this lives, exactly the given modifiers are in force: others that are held or locked are
// lifted, missing ones pressed. Then everything is as it was.
class ExactModifiers {
 public:
  ExactModifiers(const x11::Connection& connection, const Keyboard& keyboard, CGEventFlags flags);
  ~ExactModifiers();
  ExactModifiers(const ExactModifiers&) = delete;
  ExactModifiers& operator=(const ExactModifiers&) = delete;

 private:
  const x11::Connection& connection_;
  std::vector<xcb_keycode_t> released_;
  std::vector<xcb_keycode_t> pressed_;
  bool changedCapsLock_ = false;
  bool capsLockBefore_ = false;
};

}  // namespace vlm::platform::input
