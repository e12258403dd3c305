#include "x_connection.h"

#include <glib-unix.h>

#include <string>
#include <string_view>
#include <utility>

#include "failure.h"

namespace vlm::tools {
namespace {

const xcb_screen_t* screenAt(xcb_connection_t* connection, int number) {
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  for (; number > 0 && screens.rem > 1; --number) xcb_screen_next(&screens);
  return screens.data;
}

std::string unreachable() {
  const char* display = g_getenv("DISPLAY");
  if (display == nullptr || *display == '\0')
    return "there is no screen to use: DISPLAY is not set";
  return "the X server of DISPLAY " + std::string(display) + " can't be reached";
}

}  // namespace

XConnection::XConnection(MainLoop& loop, Handler handler)
    : loop_(loop), handler_(std::move(handler)) {
  int number = 0;
  connection_.reset(xcb_connect(nullptr, &number));
  if (xcb_connection_has_error(get()) != 0) throw Failure(unreachable());
  screen_ = screenAt(get(), number);
  readable_.reset(g_unix_fd_source_new(xcb_get_file_descriptor(get()),
                                       static_cast<GIOCondition>(G_IO_IN | G_IO_HUP | G_IO_ERR)));
  // Each kind of source has another type of callback, which is passed as the common one.
  g_source_set_callback(readable_.get(),
                        reinterpret_cast<GSourceFunc>(reinterpret_cast<void (*)()>(&onReadable)),
                        this, nullptr);
  g_source_attach(readable_.get(), nullptr);
}

xcb_atom_t XConnection::atom(std::string_view name) const {
  const auto cookie =
      xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
  const XReply<xcb_intern_atom_reply_t> reply(xcb_intern_atom_reply(get(), cookie, nullptr));
  return reply ? reply->atom : static_cast<xcb_atom_t>(XCB_ATOM_NONE);
}

void XConnection::settle() {
  xcb_flush(get());
  handleEvents();
}

gboolean XConnection::onReadable(gint, GIOCondition, gpointer self) {
  auto& connection = *static_cast<XConnection*>(self);
  connection.loop_.guarded([&] { connection.handleEvents(); });
  if (xcb_connection_has_error(connection.get()) == 0) return G_SOURCE_CONTINUE;
  connection.loop_.fail("the connection to the X server was lost");
  return G_SOURCE_REMOVE;
}

void XConnection::handleEvents() {
  while (const XReply<xcb_generic_event_t> event{xcb_poll_for_event(get())}) handler_(*event);
  xcb_flush(get());
}

}  // namespace vlm::tools
