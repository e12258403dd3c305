#pragma once

#include <xcb/record.h>

#include <cstdint>
#include <functional>
#include <memory>
#include <vector>

#include "platform/linux/glib/descriptor_source.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::input {

// Reports every key press of the display, auto-repeats included, on the main thread while the host
// runs its loop, whichever window has the keyboard. Two connections: one on which the server
// streams what it records, one for everything else.
class KeyRecorder {
 public:
  using Handler = std::function<void(xcb_keycode_t keycode)>;

  // Null when the server can't be reached or does not record.
  static std::unique_ptr<KeyRecorder> start(Handler handler);
  ~KeyRecorder();
  KeyRecorder(const KeyRecorder&) = delete;
  KeyRecorder& operator=(const KeyRecorder&) = delete;

 private:
  KeyRecorder(std::unique_ptr<x11::Connection> control, std::unique_ptr<x11::Connection> stream,
              Handler handler);
  bool enable();
  void read();
  std::vector<xcb_keycode_t> takePresses();
  static void addPresses(const xcb_record_enable_context_reply_t& reply,
                         std::vector<xcb_keycode_t>& presses);

  const std::unique_ptr<x11::Connection> control_;
  const std::unique_ptr<x11::Connection> stream_;
  const Handler handler_;
  xcb_record_context_t context_ = XCB_NONE;
  unsigned sequence_ = 0;
  Ref<glib::DescriptorSource> source_;
  // Lets a reading underway see that the recorder has gone: a handler may end it.
  std::shared_ptr<bool> ended_ = std::make_shared<bool>(false);
};

}  // namespace vlm::platform::input
