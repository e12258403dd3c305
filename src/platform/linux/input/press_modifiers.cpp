#include "platform/linux/input/press_modifiers.h"

#include <xcb/xtest.h>

#include <algorithm>

#include "platform/linux/input/device_keys.h"
#include "platform/linux/x11/reply.h"
#include "platform/linux/x11/xkb.h"

namespace vlm::platform::input {
namespace {

struct LockState {
  std::uint8_t locked;
  std::uint8_t latched;  // for the next press only
};

std::optional<LockState> lockState(const x11::Connection& connection, std::uint8_t bits) {
  const auto asked = xcb_xkb_get_state(connection.get(), XCB_XKB_ID_USE_CORE_KBD);
  const x11::Reply<xcb_xkb_get_state_reply_t> reply(
      xcb_xkb_get_state_reply(connection.get(), asked, nullptr));
  if (!reply) return std::nullopt;
  return LockState{static_cast<std::uint8_t>(reply->lockedMods & bits),
                   static_cast<std::uint8_t>(reply->latchedMods & bits)};
}

// Locks the modifiers of `locked` and no others of `bits`; latched ones are let go.
void lock(const x11::Connection& connection, std::uint8_t bits, std::uint8_t locked) {
  xcb_xkb_latch_lock_state(connection.get(), XCB_XKB_ID_USE_CORE_KBD, bits, locked, 0, 0, bits, 0,
                           0);
}

// The keys to press for modifiers that none of the keys down makes.
KeySet missing(const std::vector<std::vector<xcb_keycode_t>>& wanted, const KeySet& down) {
  KeySet keys;
  for (const auto& choice : wanted) {
    if (std::ranges::none_of(choice, [&](auto key) { return down.test(key); })) {
      keys.set(choice.front());
    }
  }
  return keys;
}

}  // namespace

void fakeKey(const x11::Connection& connection, xcb_keycode_t key, bool down) {
  xcb_test_fake_input(connection.get(), down ? XCB_KEY_PRESS : XCB_KEY_RELEASE, key,
                      XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
}

void PressModifiers::take(const x11::Connection& connection, const Keyboard& keyboard,
                          CGEventFlags flags, bool forPress) {
  const auto wanted = keyboard.keysFor(flags);
  KeySet kept;
  for (const auto& choice : wanted) {
    for (const auto key : choice) kept.set(key);
  }
  const auto down = heldKeys(connection) & keyboard.modifiers();
  const auto lifted = down & ~kept;
  const auto pressed = forPress ? missing(wanted, down) : KeySet();
  const auto changes = (lifted | pressed) & ~changed_;
  if (changes.any()) {
    const auto holders = deviceKeys(connection);
    posted_ |= (holders ? down & holders->posted : down) & changes;
    changed_ |= changes;
  }
  change(connection, lifted, false);
  change(connection, pressed, true);
  setLocks(connection, keyboard, flags, forPress);
}

void PressModifiers::leave(xcb_keycode_t key) {
  changed_.reset(key);
  posted_.reset(key);
}

void PressModifiers::giveBack(const x11::Connection& connection, const Keyboard& keyboard) {
  if (changed_.any()) {
    // A person may have let go of a key meanwhile, or taken hold of it.
    const auto down = heldKeys(connection);
    const auto holders = deviceKeys(connection);
    const auto wanted = holders ? posted_ | holders->hardware : posted_;
    change(connection, changed_ & down & ~wanted, false);
    change(connection, changed_ & ~down & wanted, true);
  }
  const auto state = locks_ ? lockState(connection, keyboard.lockableBits()) : std::nullopt;
  // Locked or unlocked by a person meanwhile: it stays so.
  if (state && state->locked == locks_->now) {
    lock(connection, keyboard.lockableBits(), locks_->before);
  }
  *this = {};
}

void PressModifiers::change(const x11::Connection& connection, const KeySet& keys, bool down) {
  for (std::size_t i = 0; i < keys.size(); ++i) {
    if (!keys.test(i)) continue;
    const auto key = static_cast<xcb_keycode_t>(i);
    // XTEST's device may count a key as down from before, and would drop the press.
    if (down) fakeKey(connection, key, false);
    fakeKey(connection, key, down);
  }
}

void PressModifiers::setLocks(const x11::Connection& connection, const Keyboard& keyboard,
                              CGEventFlags flags, bool forPress) {
  const auto bits = keyboard.lockableBits();
  const auto state = lockState(connection, bits);
  if (!state) return;
  std::uint8_t wanted = (flags & kCGEventFlagMaskAlphaShift) != 0 ? XCB_MOD_MASK_LOCK : 0;
  if (!forPress) wanted &= state->locked;
  if (state->locked == wanted && state->latched == 0) return;
  lock(connection, bits, wanted);
  locks_ = Locks{locks_ ? locks_->before : state->locked, wanted};
}

}  // namespace vlm::platform::input
