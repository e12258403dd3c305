#pragma once

#include <xcb/xcb.h>

#include <cstdlib>
#include <functional>
#include <memory>
#include <string_view>

#include "main_loop.h"

namespace vlm::tools {

struct FreeReply {
  void operator()(void* reply) const { std::free(reply); }
};
template <class Reply>
using XReply = std::unique_ptr<Reply, FreeReply>;

// What happened, without the bit that marks an event as sent by another program.
inline int typeOf(const xcb_generic_event_t& event) {
  return event.response_type & 0x7F;
}

// A connection to the X server whose events are handled on the main loop. A server that goes away
// makes the loop fail.
class XConnection {
 public:
  using Handler = std::function<void(const xcb_generic_event_t&)>;

  XConnection(MainLoop& loop, Handler handler);

  xcb_connection_t* get() const { return connection_.get(); }
  const xcb_screen_t& screen() const { return *screen_; }
  xcb_atom_t atom(std::string_view name) const;
  // Sends what was asked, and handles what came in with the replies.
  void settle();

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
  };

  static gboolean onReadable(gint fd, GIOCondition condition, gpointer self);
  void handleEvents();

  MainLoop& loop_;
  Handler handler_;
  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  const xcb_screen_t* screen_ = nullptr;
  Source readable_;
};

}  // namespace vlm::tools
