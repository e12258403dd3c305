#pragma once

#include <xcb/res.h>
#include <xcb/xcb.h>

#include <array>
#include <cstdint>
#include <optional>
#include <string>
#include <unordered_map>
#include <vector>

#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/properties.h"
#include "platform/linux/x11/window_list.h"

namespace vlm::platform::x11 {

using WindowIds = std::vector<xcb_window_t>;

// The names of what window managers and clients say about windows.
struct WindowAtoms {
  explicit WindowAtoms(const Connection& connection);
  xcb_atom_t stacking, clients, active, manager, name, processId, state, hidden, shadow, mark;
};

// The processes of windows, asked for when this is made: what the server knows about their clients,
// in one request, and what the windows of the others (programs on another machine) say of
// themselves.
class ProcessRequest {
 public:
  ProcessRequest(const Connection& connection, const WindowAtoms& atoms, WindowIds windows);

  // A window of which neither is known is left out.
  std::unordered_map<xcb_window_t, std::int32_t> collect();

 private:
  std::unordered_map<std::uint32_t, std::int32_t> processesOfClients();
  std::uint32_t clientOf(xcb_window_t window) const;

  const Connection& connection_;
  const xcb_atom_t pidProperty_;
  const WindowIds windows_;
  std::optional<xcb_res_query_client_ids_cookie_t> clients_;
};

// Everything else asked about one window, underway until it is collected, so that many windows can
// be asked about at once.
class WindowRequest {
 public:
  WindowRequest(const Connection& connection, const WindowAtoms& atoms, xcb_window_t window,
                Details details);

  struct Answer {
    Window window;
    bool bypassesManager = false;
  };
  // Nothing for a window that is gone or that can't be seen by its nature.
  std::optional<Answer> collect(const WindowAtoms& atoms);

 private:
  struct Texts {
    PropertyRequest name;
    PropertyRequest oldName;
    PropertyRequest windowClass;
    PropertyRequest transientFor;
  };
  static std::optional<std::string> classIn(PropertyRequest& windowClass);

  const Connection& connection_;
  xcb_window_t window_;
  xcb_get_window_attributes_cookie_t attributes_;
  xcb_get_geometry_cookie_t geometry_;
  xcb_translate_coordinates_cookie_t place_;
  PropertyRequest state_;
  PropertyRequest shadow_;
  std::optional<Texts> texts_;
};

}  // namespace vlm::platform::x11
