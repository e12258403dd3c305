#pragma once

#include <cstdint>
#include <optional>

#include "platform/cg_event.h"
#include "platform/linux/input/keyboard.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::input {

// Presses or releases a key through XTEST.
void fakeKey(const x11::Connection& connection, xcb_keycode_t key, bool down);

// The modifiers that posted presses are seen with, for as long as the key is down: the server's own
// repeats of it are seen with them too. Then everything is as people and other programs have it.
class PressModifiers {
 public:
  // Puts exactly these modifiers in force: others that are held or locked are lifted, missing ones
  // pressed. For the release of a key none is pressed.
  void take(const x11::Connection& connection, const Keyboard& keyboard, CGEventFlags flags,
            bool forPress);
  // A modifier's key that is posted by itself is no longer ours to press or lift.
  void leave(xcb_keycode_t key);
  void giveBack(const x11::Connection& connection, const Keyboard& keyboard);

 private:
  struct Locks {
    std::uint8_t before;
    std::uint8_t now;
  };

  void change(const x11::Connection& connection, const KeySet& keys, bool down);
  void setLocks(const x11::Connection& connection, const Keyboard& keyboard, CGEventFlags flags,
                bool forPress);

  KeySet changed_;  // pressed or lifted here
  KeySet posted_;   // of those, the ones that other programs held
  std::optional<Locks> locks_;
};

}  // namespace vlm::platform::input
