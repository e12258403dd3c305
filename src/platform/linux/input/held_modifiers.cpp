#include "platform/linux/input/held_modifiers.h"

#include <xcb/xtest.h>

#include "platform/linux/x11/reply.h"
#include "platform/linux/x11/xkb.h"

namespace vlm::platform::input {
namespace {

bool capsLocked(const x11::Connection& connection) {
  const auto asked = xcb_xkb_get_state(connection.get(), XCB_XKB_ID_USE_CORE_KBD);
  const x11::Reply<xcb_xkb_get_state_reply_t> reply(
      xcb_xkb_get_state_reply(connection.get(), asked, nullptr));
  return reply && (reply->lockedMods & XCB_MOD_MASK_LOCK) != 0;
}

void lockCaps(const x11::Connection& connection, bool locked) {
  xcb_xkb_latch_lock_state(connection.get(), XCB_XKB_ID_USE_CORE_KBD, XCB_MOD_MASK_LOCK,
                           locked ? XCB_MOD_MASK_LOCK : 0, 0, 0, 0, 0, 0);
}

}  // namespace

void fakeKey(const x11::Connection& connection, xcb_keycode_t key, bool down) {
  xcb_test_fake_input(connection.get(), down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, key,
                      XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
}

ExactModifiers::ExactModifiers(const x11::Connection& connection, const Keyboard& keyboard,
                               CGEventFlags flags)
    : connection_(connection) {
  CGEventFlags held = 0;
  for (const auto key : keyboard.heldModifiers(heldKeys(connection))) {
    const CGEventFlags flag = keyboard.flagOf(key);
    if ((flags & flag) != 0) {
      held |= flag;
    } else {
      fakeKey(connection, key, false);
      released_.push_back(key);
    }
  }
  for (const auto flag : {kCGEventFlagMaskShift, kCGEventFlagMaskControl, kCGEventFlagMaskAlternate,
                          kCGEventFlagMaskCommand}) {
    if ((flags & flag) == 0 || (held & flag) != 0) continue;
    if (const auto key = keyboard.keyFor(flag)) {
      // The device that we press it on may count it as down from before, and would drop the press.
      fakeKey(connection, *key, false);
      fakeKey(connection, *key, true);
      pressed_.push_back(*key);
    }
  }
  const bool wantsCapsLock = (flags & kCGEventFlagMaskAlphaShift) != 0;
  capsLockBefore_ = capsLocked(connection);
  changedCapsLock_ = capsLockBefore_ != wantsCapsLock;
  if (changedCapsLock_) lockCaps(connection, wantsCapsLock);
}

ExactModifiers::~ExactModifiers() {
  if (changedCapsLock_) lockCaps(connection_, capsLockBefore_);
  for (const auto key : pressed_) fakeKey(connection_, key, false);
  for (const auto key : released_) fakeKey(connection_, key, true);
}

}  // namespace vlm::platform::input
