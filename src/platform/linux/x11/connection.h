#pragma once

#include <xcb/xcb.h>

#include <map>
#include <memory>
#include <string>
#include <string_view>

#include "platform/mutex.h"

namespace vlm::platform::x11 {

// A connection of our own to the X server that DISPLAY names. A lost server turns every later
// request into nothing and every reply into null; unlike with Xlib it never ends the process.
class Connection {
 public:
  // Null when the server can't be reached.
  static std::unique_ptr<Connection> open();
  ~Connection();
  Connection(const Connection&) = delete;
  Connection& operator=(const Connection&) = delete;

  xcb_connection_t* get() const noexcept { return connection_; }
  const xcb_screen_t& screen() const noexcept { return *screen_; }
  const xcb_setup_t& setup() const noexcept { return *xcb_get_setup(connection_); }
  int descriptor() const noexcept { return xcb_get_file_descriptor(connection_); }
  bool isLost() const noexcept { return xcb_connection_has_error(connection_) != 0; }

  // The atom of a name that was asked for before, else none: a server never changes one.
  xcb_atom_t knownAtom(std::string_view name) const VLM_EXCLUDES(mutex_);
  void remember(std::string_view name, xcb_atom_t atom) const VLM_EXCLUDES(mutex_);

  // Loses the server on purpose: a thread that waits for it goes on at once.
  void hangUp() const noexcept;

 private:
  Connection(xcb_connection_t* connection, xcb_screen_t* screen)
      : connection_(connection), screen_(screen) {}

  xcb_connection_t* const connection_;
  xcb_screen_t* const screen_;
  mutable Mutex mutex_;
  mutable std::map<std::string, xcb_atom_t, std::less<>> atoms_ VLM_GUARDED_BY(mutex_);
};

}  // namespace vlm::platform::x11
