#include "platform/linux/input/keyboard.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/linux/input/key_places.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"
#include "platform/linux/x11/xkb.h"

namespace vlm::platform::input {
namespace {

// The places of the modifier keys. Whether the server makes modifiers of them, and of which other
// keys too, is its modifier mapping's to say.
struct ModifierKey {
  std::string_view xkbName;
  CGEventFlags flag;
};
constexpr std::array kModifierKeys{
    ModifierKey{"LFSH", kCGEventFlagMaskShift},     ModifierKey{"RTSH", kCGEventFlagMaskShift},
    ModifierKey{"LCTL", kCGEventFlagMaskControl},   ModifierKey{"RCTL", kCGEventFlagMaskControl},
    ModifierKey{"LALT", kCGEventFlagMaskAlternate}, ModifierKey{"RALT", kCGEventFlagMaskAlternate},
    ModifierKey{"LWIN", kCGEventFlagMaskCommand},   ModifierKey{"RWIN", kCGEventFlagMaskCommand},
};

using Names = std::array<std::string, 256>;

std::optional<Names> keyNames(const x11::Connection& connection) {
  auto* c = connection.get();
  if (!supports(connection, x11::Extension::keyboard)) return std::nullopt;
  const auto asked = xcb_xkb_get_names(c, XCB_XKB_ID_USE_CORE_KBD, XCB_XKB_NAME_DETAIL_KEY_NAMES);
  const x11::Reply<xcb_xkb_get_names_reply_t> reply(xcb_xkb_get_names_reply(c, asked, nullptr));
  if (!reply) return std::nullopt;
  xcb_xkb_get_names_value_list_t list;
  xcb_xkb_get_names_value_list_unpack(xcb_xkb_get_names_value_list(reply.get()), reply->nTypes,
                                      reply->indicators, reply->virtualMods, reply->groupNames,
                                      reply->nKeys, reply->nKeyAliases, reply->nRadioGroups,
                                      reply->which, &list);
  Names names;
  for (unsigned i = 0; i < reply->nKeys && reply->firstKey + i < names.size(); ++i) {
    const char* name = list.keyNames[i].name;
    names[reply->firstKey + i].assign(name, strnlen(name, sizeof list.keyNames[i].name));
  }
  return names;
}

struct ModifierRows {
  std::bitset<256> held;   // change other keys while they are held
  std::bitset<256> locks;  // Caps Lock, which does whether it is held or not
};

// Num Lock has, by the habit of every keyboard configuration, a row of its own. It counts as a key
// like others: where it stands, a Mac's keyboard has one.
ModifierRows modifierKeys(const x11::Connection& connection) {
  constexpr unsigned kNumLockRow = XCB_MAP_INDEX_2;
  const auto asked = xcb_get_modifier_mapping(connection.get());
  const x11::Reply<xcb_get_modifier_mapping_reply_t> reply(
      xcb_get_modifier_mapping_reply(connection.get(), asked, nullptr));
  ModifierRows keys;
  if (!reply) return keys;
  const auto* codes = xcb_get_modifier_mapping_keycodes(reply.get());
  const unsigned width = reply->keycodes_per_modifier;
  for (unsigned row = XCB_MAP_INDEX_SHIFT; row <= XCB_MAP_INDEX_5; ++row) {
    if (row == kNumLockRow) continue;
    auto& kind = row == XCB_MAP_INDEX_LOCK ? keys.locks : keys.held;
    for (unsigned i = 0; i < width; ++i) kind.set(codes[row * width + i]);
  }
  keys.held.reset(0);  // 0 fills the rows that have fewer keys
  keys.locks.reset(0);
  return keys;
}

std::optional<xcb_keycode_t> keycodeNamed(const Names& names, std::string_view name) {
  const auto found = std::ranges::find(names, name);
  if (found == names.end()) return std::nullopt;
  return static_cast<xcb_keycode_t>(found - names.begin());
}

}  // namespace

std::optional<Keyboard> Keyboard::ask(const x11::Connection& connection) {
  auto names = keyNames(connection);
  if (!names) return std::nullopt;
  Keyboard keyboard;
  keyboard.names_ = std::move(*names);
  const auto modifiers = modifierKeys(connection);
  keyboard.held_ = modifiers.held;
  keyboard.locks_ = modifiers.locks;
  for (const auto& [name, flag] : kModifierKeys) {
    const auto key = keycodeNamed(keyboard.names_, name);
    if (key && keyboard.held_.test(*key)) keyboard.flags_[*key] = flag;
  }
  return keyboard;
}

std::optional<xcb_keycode_t> Keyboard::keycodeOf(std::uint16_t macKeyCode) const {
  const auto name = xkbKeyName(macKeyCode);
  return name ? keycodeNamed(names_, *name) : std::nullopt;
}

std::optional<std::uint16_t> Keyboard::macKeyCodeOf(xcb_keycode_t keycode) const {
  return macKeyCode(names_[keycode]);
}

std::optional<xcb_keycode_t> Keyboard::keyFor(CGEventFlags modifier) const {
  for (const auto& [name, flag] : kModifierKeys) {
    if (flag != modifier) continue;
    const auto key = keycodeNamed(names_, name);
    if (key && flags_[*key] == modifier) return key;
  }
  return std::nullopt;
}

std::vector<xcb_keycode_t> Keyboard::heldModifiers(const std::bitset<256>& held) const {
  std::vector<xcb_keycode_t> keys;
  for (unsigned key = 0; key < held.size(); ++key) {
    if (held.test(key) && held_.test(key)) keys.push_back(static_cast<xcb_keycode_t>(key));
  }
  return keys;
}

std::bitset<256> heldKeys(const x11::Connection& connection) {
  const auto asked = xcb_query_keymap(connection.get());
  const x11::Reply<xcb_query_keymap_reply_t> reply(
      xcb_query_keymap_reply(connection.get(), asked, nullptr));
  std::bitset<256> held;
  for (unsigned key = 0; reply && key < held.size(); ++key) {
    held.set(key, (reply->keys[key / 8] >> (key % 8) & 1) != 0);
  }
  return held;
}

}  // namespace vlm::platform::input
