#include "platform/linux/input/modifier_map.h"

#include <optional>

#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/reply.h"
#include "platform/linux/x11/xkb.h"

namespace vlm::platform::input {
namespace {

constexpr unsigned kVirtualModifiers = 16;

// The number of the virtual modifier called NumLock.
std::optional<unsigned> virtualNumLock(const x11::Connection& connection) {
  const auto [numLock] = x11::internAtoms<1>(connection, {"NumLock"});
  const auto asked = xcb_xkb_get_names(connection.get(), XCB_XKB_ID_USE_CORE_KBD,
                                       XCB_XKB_NAME_DETAIL_VIRTUAL_MOD_NAMES);
  const x11::Reply<xcb_xkb_get_names_reply_t> reply(
      xcb_xkb_get_names_reply(connection.get(), asked, nullptr));
  if (!reply || numLock == XCB_ATOM_NONE) return std::nullopt;
  xcb_xkb_get_names_value_list_t list;
  xcb_xkb_get_names_value_list_unpack(xcb_xkb_get_names_value_list(reply.get()), reply->nTypes,
                                      reply->indicators, reply->virtualMods, reply->groupNames,
                                      reply->nKeys, reply->nKeyAliases, reply->nRadioGroups,
                                      reply->which, &list);
  const auto* name = list.virtualModNames;  // one for each bit that is set
  for (unsigned i = 0; i < kVirtualModifiers; ++i) {
    if ((reply->virtualMods >> i & 1) == 0) continue;
    if (*name++ == numLock) return i;
  }
  return std::nullopt;
}

x11::Reply<xcb_xkb_get_map_reply_t> askForMap(const x11::Connection& connection) {
  constexpr std::uint16_t kParts =
      XCB_XKB_MAP_PART_VIRTUAL_MODS | XCB_XKB_MAP_PART_MODIFIER_MAP | XCB_XKB_MAP_PART_KEY_ACTIONS;
  const auto asked = xcb_xkb_get_map(connection.get(), XCB_XKB_ID_USE_CORE_KBD, kParts, 0, 0, 0, 0,
                                     0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0, 0);
  return x11::Reply<xcb_xkb_get_map_reply_t>(
      xcb_xkb_get_map_reply(connection.get(), asked, nullptr));
}

// The real modifiers that an action changes, those behind virtual ones included.
std::uint8_t changedBy(const xcb_xkb_action_t& action) {
  switch (action.type) {
    case XCB_XKB_SA_TYPE_SET_MODS:
      return action.setmods.mask;
    case XCB_XKB_SA_TYPE_LATCH_MODS:
      return action.latchmods.mask;
    case XCB_XKB_SA_TYPE_LOCK_MODS:
      return action.lockmods.mask;
    default:
      return 0;
  }
}

void addActions(const xcb_xkb_get_map_reply_t& reply, const xcb_xkb_get_map_map_t& parts,
                ModifierMap& map) {
  const auto* action = parts.acts_rtrn_acts;
  for (unsigned i = 0; i < reply.nKeyActions; ++i) {
    const unsigned key = reply.firstKeyAction + i;
    for (unsigned count = parts.acts_rtrn_count[i]; count > 0; --count) {
      if (key < map.bits.size()) map.bits[key] |= changedBy(*action);
      ++action;
    }
  }
}

}  // namespace

ModifierMap modifierMap(const x11::Connection& connection) {
  ModifierMap map;
  const auto reply = askForMap(connection);
  if (!reply) return map;
  xcb_xkb_get_map_map_t parts;
  xcb_xkb_get_map_map_unpack(xcb_xkb_get_map_map(reply.get()), reply->nTypes, reply->nKeySyms,
                             reply->nKeyActions, reply->totalActions, reply->totalKeyBehaviors,
                             reply->virtualMods, reply->totalKeyExplicit, reply->totalModMapKeys,
                             reply->totalVModMapKeys, reply->present, &parts);
  for (unsigned i = 0; i < reply->totalModMapKeys; ++i) {
    map.bits[parts.modmap_rtrn[i].keycode] |= parts.modmap_rtrn[i].mods;
  }
  addActions(*reply, parts, map);
  const auto numLock = virtualNumLock(connection);
  const auto* bound = parts.vmods_rtrn;  // one for each bit that is set
  for (unsigned i = 0; i < kVirtualModifiers; ++i) {
    if ((reply->virtualMods >> i & 1) == 0) continue;
    if (numLock == i && *bound != 0) map.numLock = *bound;
    ++bound;
  }
  return map;
}

}  // namespace vlm::platform::input
