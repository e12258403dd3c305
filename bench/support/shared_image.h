#pragma once

#include <xcb/shm.h>
#include <xcb/xcb.h>

#include <cstddef>
#include <cstdint>
#include <memory>

namespace vlm::bench {

struct Disconnect {
  void operator()(xcb_connection_t* connection) const { xcb_disconnect(connection); }
};

// A connection to the server that DISPLAY names.
class Server {
 public:
  Server();
  xcb_connection_t* get() const { return connection_.get(); }
  const xcb_screen_t& screen() const { return *screen_; }
  // Returns when the server has done all that was asked of it.
  void finish() const;

 private:
  std::unique_ptr<xcb_connection_t, Disconnect> connection_;
  const xcb_screen_t* screen_ = nullptr;
};

// A picture in memory that the server reads for itself.
class SharedImage {
 public:
  SharedImage(const Server& server, std::uint16_t width, std::uint16_t height);
  ~SharedImage();
  SharedImage(const SharedImage&) = delete;
  SharedImage& operator=(const SharedImage&) = delete;

  std::uint16_t width() const { return width_; }
  std::uint16_t height() const { return height_; }
  std::uint32_t* pixels() const { return pixels_; }

  // Shows the part of the picture at (x, y) at the origin of a window or pixmap.
  void put(xcb_drawable_t target, std::uint16_t x, std::uint16_t y, std::uint16_t width,
           std::uint16_t height) const;

 private:
  const Server& server_;
  std::uint16_t width_;
  std::uint16_t height_;
  std::uint32_t* pixels_ = nullptr;
  xcb_shm_seg_t segment_;
  xcb_gcontext_t context_;
};

// A mapped window that no window manager touches.
xcb_window_t openWindow(const Server& server, std::int16_t x, std::int16_t y, std::uint16_t width,
                        std::uint16_t height);

// Shows a view, as vlm_present_view() gives it, in such a window of a host.
void placeView(const Server& server, const void* view, const xcb_rectangle_t& place);

}  // namespace vlm::bench
