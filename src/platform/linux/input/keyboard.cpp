#include "platform/linux/input/keyboard.h"

#include <algorithm>
#include <cstring>
#include <string_view>
#include <utility>

#include "platform/linux/input/key_places.h"
#include "platform/linux/input/modifier_map.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"
#include "platform/linux/x11/xkb.h"

namespace vlm::platform::input {
namespace {

// The places of the modifier keys. Whether the server makes modifiers of them, and of which other
// keys too, is its modifier map's to say.
struct ModifierKey {
  std::string_view xkbName;
  CGEventFlags flag;
  CGEventFlags side =
      0;  // only option's two keys differ: the right one is AltGr where there is one
};
constexpr std::array kModifierKeys{
    ModifierKey{"LFSH", kCGEventFlagMaskShift},
    ModifierKey{"RTSH", kCGEventFlagMaskShift},
    ModifierKey{"LCTL", kCGEventFlagMaskControl},
    ModifierKey{"RCTL", kCGEventFlagMaskControl},
    ModifierKey{"LALT", kCGEventFlagMaskAlternate, NX_DEVICELALTKEYMASK},
    ModifierKey{"RALT", kCGEventFlagMaskAlternate, NX_DEVICERALTKEYMASK},
    ModifierKey{"LWIN", kCGEventFlagMaskCommand},
    ModifierKey{"RWIN", kCGEventFlagMaskCommand},
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
  const auto map = modifierMap(connection);
  keyboard.numLockBits_ = map.numLock;
  for (std::size_t key = 0; key < map.bits.size(); ++key) {
    const auto bits = map.bits[key] & keyboard.lockableBits();
    keyboard.held_.set(key, (bits & ~XCB_MOD_MASK_LOCK) != 0);
    keyboard.locks_.set(key, (bits & XCB_MOD_MASK_LOCK) != 0);
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

std::vector<xcb_keycode_t> Keyboard::keysOf(CGEventFlags modifier, CGEventFlags sides) const {
  std::vector<xcb_keycode_t> keys;
  for (const auto& [name, flag, side] : kModifierKeys) {
    if (flag != modifier || (sides != 0 && side != sides)) continue;
    const auto key = keycodeNamed(names_, name);
    if (key && held_.test(*key)) keys.push_back(*key);
  }
  return keys;
}

std::vector<std::vector<xcb_keycode_t>> Keyboard::keysFor(CGEventFlags flags) const {
  std::vector<std::vector<xcb_keycode_t>> all;
  for (const auto flag : {kCGEventFlagMaskShift, kCGEventFlagMaskControl, kCGEventFlagMaskCommand,
                          kCGEventFlagMaskAlternate}) {
    if ((flags & flag) == 0) continue;
    const auto eitherSide = keysOf(flag, 0);
    if (eitherSide.empty()) continue;
    const auto before = all.size();
    for (const auto side : {NX_DEVICELALTKEYMASK, NX_DEVICERALTKEYMASK}) {
      if (flag != kCGEventFlagMaskAlternate || (flags & side) == 0) continue;
      const auto ofSide = keysOf(flag, side);
      all.push_back(ofSide.empty() ? eitherSide : ofSide);
    }
    if (all.size() == before) all.push_back(eitherSide);
  }
  return all;
}

KeySet heldKeys(const x11::Connection& connection) {
  const auto asked = xcb_query_keymap(connection.get());
  const x11::Reply<xcb_query_keymap_reply_t> reply(
      xcb_query_keymap_reply(connection.get(), asked, nullptr));
  return reply ? keySet(reply->keys) : KeySet();
}

}  // namespace vlm::platform::input
