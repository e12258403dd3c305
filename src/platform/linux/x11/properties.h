#pragma once

#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::x11 {

// The atoms of these names, in one round trip where any is new; those that could not be had are
// none.
template <std::size_t count>
std::array<xcb_atom_t, count> internAtoms(const Connection& connection,
                                          const std::array<std::string_view, count>& names) {
  std::array<xcb_atom_t, count> atoms{};
  std::array<xcb_intern_atom_cookie_t, count> asked{};
  for (std::size_t i = 0; i < count; ++i) {
    atoms[i] = connection.knownAtom(names[i]);
    if (atoms[i] != XCB_ATOM_NONE) continue;
    asked[i] = xcb_intern_atom(connection.get(), 0, static_cast<std::uint16_t>(names[i].size()),
                               names[i].data());
  }
  for (std::size_t i = 0; i < count; ++i) {
    if (atoms[i] != XCB_ATOM_NONE) continue;
    const Reply<xcb_intern_atom_reply_t> reply(
        xcb_intern_atom_reply(connection.get(), asked[i], nullptr));
    if (!reply) continue;
    atoms[i] = reply->atom;
    connection.remember(names[i], reply->atom);
  }
  return atoms;
}

// The type of text in escape sequences. It is recognised once internAtoms() was asked for it.
inline constexpr std::string_view kCompoundText = "COMPOUND_TEXT";

// A property of a window, asked for when this is made and waited for when it is read, so that many
// can be underway at once.
class PropertyRequest {
 public:
  PropertyRequest(const Connection& connection, xcb_window_t window, xcb_atom_t property);
  ~PropertyRequest();
  PropertyRequest(PropertyRequest&& other) noexcept;
  PropertyRequest& operator=(PropertyRequest&&) = delete;

  // The property as a list of 32-bit values (windows, atoms, numbers); empty when there is none.
  std::vector<std::uint32_t> values();
  // The property as UTF-8 text, zero bytes included; nothing when there is none. Text of the old
  // kinds is converted, and what is not valid is replaced.
  std::optional<std::string> text();

 private:
  const xcb_get_property_reply_t* reply();

  xcb_connection_t* connection_;
  xcb_atom_t compoundText_;
  xcb_get_property_cookie_t asked_;
  bool pending_ = true;
  Reply<xcb_get_property_reply_t> reply_;
};

}  // namespace vlm::platform::x11
