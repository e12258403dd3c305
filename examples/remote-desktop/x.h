// A connection to the X server, whose events come on the main loop.
#pragma once

#include <xcb/xcb.h>
#include <xcb/xfixes.h>

#include <cstdio>
#include <cstdlib>
#include <list>
#include <stdexcept>
#include <string_view>

#include "loop.h"
#include "owner.h"

namespace remote {

template <class Type>
using Reply = Owner<Type, std::free>;

class X {
 public:
  using Handler = std::function<void(const xcb_generic_event_t&)>;

  X() : connection_(xcb_connect(nullptr, nullptr)) {
    if (xcb_connection_has_error(get()) != 0)
      throw std::runtime_error("no X server can be reached");
    root_ = xcb_setup_roots_iterator(xcb_get_setup(get())).data->root;
    ask(xcb_xfixes_query_version_reply, xcb_xfixes_query_version(get(), 5, 0));
    const auto* xfixes = xcb_get_extension_data(get(), &xcb_xfixes_id);
    if (xfixes == nullptr || xfixes->present == 0) throw std::runtime_error("no XFixes");
    firstXfixesEvent_ = xfixes->first_event;
    readable_ = Source::whenReady(xcb_get_file_descriptor(get()), G_IO_IN, [this] { handle(); });
  }

  xcb_connection_t* get() const { return connection_.get(); }
  xcb_window_t root() const { return root_; }
  std::uint8_t firstXfixesEvent() const { return firstXfixesEvent_; }
  // All handlers get all events.
  void addHandler(Handler handler) { handlers_.push_back(std::move(handler)); }
  void flush() { xcb_flush(get()); }

  // Waits for the answer to a request; null when it failed.
  template <class Type, class Cookie>
  Reply<Type> ask(Type* (*wait)(xcb_connection_t*, Cookie, xcb_generic_error_t**), Cookie cookie) {
    Reply<Type> reply(wait(get(), cookie, nullptr));
    // Events that came in with it don't make the connection readable again.
    mailbox_.post([this] { handle(); });
    return reply;
  }
  xcb_atom_t atom(std::string_view name) {
    const auto length = static_cast<std::uint16_t>(name.size());
    const auto reply = ask(xcb_intern_atom_reply, xcb_intern_atom(get(), 0, length, name.data()));
    return reply ? reply->atom : xcb_atom_t{XCB_ATOM_NONE};
  }
  // A window of no area, for what needs one.
  xcb_window_t hiddenWindow() {
    const auto window = xcb_generate_id(get());
    xcb_create_window(get(), XCB_COPY_FROM_PARENT, window, root_, -1, -1, 1, 1, 0,
                      XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT, 0, nullptr);
    return window;
  }

 private:
  void handle() {
    while (const Reply<xcb_generic_event_t> event{xcb_poll_for_event(get())}) {
      event->response_type &= 0x7F;  // without the mark of those that clients send
      for (const auto& handler : handlers_) handler(*event);
    }
    flush();
    if (xcb_connection_has_error(get()) == 0) return;
    std::fprintf(stderr, "remote: the X server has gone\n");
    std::exit(1);
  }

  Owner<xcb_connection_t, xcb_disconnect> connection_;
  xcb_window_t root_ = 0;
  std::uint8_t firstXfixesEvent_ = 0;
  std::list<Handler> handlers_;
  Source readable_;
  Mailbox mailbox_;
};

template <class Event>
const Event& as(const xcb_generic_event_t& event) {
  return reinterpret_cast<const Event&>(event);
}

}  // namespace remote
