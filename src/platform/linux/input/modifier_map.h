#pragma once

#include <array>
#include <cstdint>

#include "platform/linux/x11/connection.h"

namespace vlm::platform::input {

// Which of the server's eight modifiers each key makes: by its row in the core protocol's map, or
// by its action, which may name a virtual modifier that the layout has bound to a real one. On most
// layouts AltGr's own key is in no row.
struct ModifierMap {
  std::array<std::uint8_t, 256> bits{};
  std::uint8_t numLock = XCB_MOD_MASK_2;  // by the habit of every keyboard configuration
};

// Nothing is a modifier when the server does not answer. The server has the keyboard extension.
ModifierMap modifierMap(const x11::Connection& connection);

}  // namespace vlm::platform::input
