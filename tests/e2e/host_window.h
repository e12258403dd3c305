#pragma once

#include <xcb/xcb.h>

#include <cstdint>
#include <string>

namespace vlm::test {

// A host program's window, on a connection of its own, that counts the clicks it gets.
class HostWindow {
 public:
  HostWindow(std::uint16_t width, std::uint16_t height);
  ~HostWindow() { xcb_disconnect(connection_); }
  HostWindow(const HostWindow&) = delete;
  HostWindow& operator=(const HostWindow&) = delete;

  std::string id() const { return std::to_string(window_); }
  // What a host does with the pointer that vlm_present_view returns.
  void place(const void* view);
  void map();  // and waits until it is on the screen
  void unmap();
  void resize(std::uint16_t width, std::uint16_t height);
  void destroy();
  // The button presses on the window itself that have arrived since the last call.
  int clicks();
  bool isViewable();

 private:
  xcb_connection_t* const connection_;
  const xcb_window_t window_;
};

}  // namespace vlm::test
