#pragma once

#include <xcb/xcb.h>

#include <array>
#include <bitset>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "platform/cg_event.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::input {

using KeySet = std::bitset<256>;

// The set of a bit for each key, as the protocol passes it.
template <std::size_t size>
KeySet keySet(const std::uint8_t (&bits)[size]) {
  static_assert(size * 8 == KeySet().size());
  KeySet keys;
  for (std::size_t key = 0; key < keys.size(); ++key) {
    keys.set(key, (bits[key / 8] >> (key % 8) & 1) != 0);
  }
  return keys;
}

// Which keycode is at which place, and which keys make which modifiers, as the server has it when
// this is made.
class Keyboard {
 public:
  // Nothing when the server can't say.
  static std::optional<Keyboard> ask(const x11::Connection& connection);

  std::optional<xcb_keycode_t> keycodeOf(std::uint16_t macKeyCode) const;
  std::optional<std::uint16_t> macKeyCodeOf(xcb_keycode_t keycode) const;

  // The keys that change other keys while they are held.
  const KeySet& modifiers() const { return held_; }
  // Whether a key does nothing but change others: Caps Lock too.
  bool isModifier(xcb_keycode_t key) const { return held_.test(key) || locks_.test(key); }
  // For each modifier that the flags ask for, the keys that make it, the usual one first. Modifiers
  // that no key makes are left out.
  std::vector<std::vector<xcb_keycode_t>> keysFor(CGEventFlags flags) const;
  // The server's bits of all modifiers but Num Lock, which Apple's keyboards don't have.
  std::uint8_t lockableBits() const { return static_cast<std::uint8_t>(~numLockBits_); }

 private:
  // The keys of a modifier; with a side given, only that of this side.
  std::vector<xcb_keycode_t> keysOf(CGEventFlags modifier, CGEventFlags side) const;

  std::array<std::string, 256> names_;
  KeySet held_;
  KeySet locks_;
  std::uint8_t numLockBits_ = XCB_MOD_MASK_2;
};

// The keys that are down now.
KeySet heldKeys(const x11::Connection& connection);

}  // namespace vlm::platform::input
