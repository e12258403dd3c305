#include "platform/linux/x11/connection.h"

#include <sys/socket.h>

namespace vlm::platform::x11 {
namespace {

xcb_screen_t* screenNumber(xcb_connection_t* connection, int number) {
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; number > 0 && screens.rem > 0; --number) xcb_screen_next(&screens);
  return screens.rem > 0 ? screens.data : nullptr;
}

// One at a time: the library that looks up the server's authority keeps the file's name in memory
// that it shares between threads.
xcb_connection_t* connect(int& number) {
  static constinit Mutex mutex;
  const MutexLock lock(mutex);
  return xcb_connect(nullptr, &number);
}

}  // namespace

std::unique_ptr<Connection> Connection::open() {
  int number = 0;
  xcb_connection_t* connection = connect(number);
  xcb_screen_t* screen =
      xcb_connection_has_error(connection) == 0 ? screenNumber(connection, number) : nullptr;
  if (screen == nullptr) {
    xcb_disconnect(connection);  // a failed connection is an object too
    return nullptr;
  }
  return std::unique_ptr<Connection>(new Connection(connection, screen));
}

Connection::~Connection() {
  xcb_disconnect(connection_);
}

xcb_atom_t Connection::knownAtom(std::string_view name) const {
  const MutexLock lock(mutex_);
  const auto known = atoms_.find(name);
  return known == atoms_.end() ? xcb_atom_t{XCB_ATOM_NONE} : known->second;
}

void Connection::remember(std::string_view name, xcb_atom_t atom) const {
  const MutexLock lock(mutex_);
  atoms_.insert_or_assign(std::string(name), atom);
}

void Connection::hangUp() const noexcept {
  shutdown(descriptor(), SHUT_RDWR);
}

}  // namespace vlm::platform::x11
