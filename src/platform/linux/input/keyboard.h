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

// Which keycode stands at which place, and which keys make which modifiers, as the server has it
// when this is made.
class Keyboard {
 public:
  // Nothing when the server can't tell.
  static std::optional<Keyboard> ask(const x11::Connection& connection);

  std::optional<xcb_keycode_t> keycodeOf(std::uint16_t macKeyCode) const;
  std::optional<std::uint16_t> macKeyCodeOf(xcb_keycode_t keycode) const;

  // The key that is pressed to get a modifier; nothing for a modifier that no key makes.
  std::optional<xcb_keycode_t> keyFor(CGEventFlags modifier) const;
  // The keys among those held that make any modifier.
  std::vector<xcb_keycode_t> heldModifiers(const std::bitset<256>& held) const;
  // Whether a key does nothing but change others: Caps Lock too.
  bool isModifier(xcb_keycode_t key) const { return held_.test(key) || locks_.test(key); }
  // What a key makes: one of the event flags, 0 for none of them.
  CGEventFlags flagOf(xcb_keycode_t key) const { return flags_[key]; }

 private:
  std::array<std::string, 256> names_;
  std::array<CGEventFlags, 256> flags_{};
  std::bitset<256> held_;
  std::bitset<256> locks_;
};

// The keys that are down now.
std::bitset<256> heldKeys(const x11::Connection& connection);

}  // namespace vlm::platform::input
