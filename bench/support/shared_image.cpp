#include "bench/support/shared_image.h"

#include <sys/mman.h>
#include <unistd.h>

#include <cstdlib>
#include <stdexcept>

namespace vlm::bench {

Server::Server() : connection_(xcb_connect(nullptr, nullptr)) {
  if (xcb_connection_has_error(connection_.get())) throw std::runtime_error("no X server");
  screen_ = xcb_setup_roots_iterator(xcb_get_setup(connection_.get())).data;
}

void Server::finish() const {
  std::free(xcb_get_input_focus_reply(get(), xcb_get_input_focus(get()), nullptr));
}

SharedImage::SharedImage(const Server& server, std::uint16_t width, std::uint16_t height)
    : server_(server),
      width_(width),
      height_(height),
      segment_(xcb_generate_id(server.get())),
      context_(xcb_generate_id(server.get())) {
  const std::size_t size = std::size_t{width} * height * sizeof(std::uint32_t);
  const int file = memfd_create("picture", MFD_CLOEXEC);
  void* memory = MAP_FAILED;
  if (file >= 0 && ftruncate(file, static_cast<off_t>(size)) == 0) {
    memory = mmap(nullptr, size, PROT_READ | PROT_WRITE, MAP_SHARED, file, 0);
  }
  if (memory == MAP_FAILED) throw std::runtime_error("no shared memory");
  pixels_ = static_cast<std::uint32_t*>(memory);
  xcb_shm_attach_fd(server.get(), segment_, file, 1);  // the descriptor goes with the request
  xcb_create_gc(server.get(), context_, server.screen().root, 0, nullptr);
}

SharedImage::~SharedImage() {
  xcb_free_gc(server_.get(), context_);
  xcb_shm_detach(server_.get(), segment_);
  munmap(pixels_, std::size_t{width_} * height_ * sizeof(std::uint32_t));
}

void SharedImage::put(xcb_drawable_t target, std::uint16_t x, std::uint16_t y, std::uint16_t width,
                      std::uint16_t height) const {
  xcb_shm_put_image(server_.get(), target, context_, width_, height_, x, y, width, height, 0, 0,
                    server_.screen().root_depth, XCB_IMAGE_FORMAT_Z_PIXMAP, 0, segment_, 0);
}

xcb_window_t openWindow(const Server& server, std::int16_t x, std::int16_t y, std::uint16_t width,
                        std::uint16_t height) {
  const xcb_window_t window = xcb_generate_id(server.get());
  const std::uint32_t values[] = {XCB_BACK_PIXMAP_NONE, 1};
  xcb_create_window(server.get(), XCB_COPY_FROM_PARENT, window, server.screen().root, x, y, width,
                    height, 0, XCB_WINDOW_CLASS_INPUT_OUTPUT, XCB_COPY_FROM_PARENT,
                    XCB_CW_BACK_PIXMAP | XCB_CW_OVERRIDE_REDIRECT, values);
  xcb_map_window(server.get(), window);
  return window;
}

void placeView(const Server& server, const void* view, const xcb_rectangle_t& place) {
  if (view == nullptr) throw std::runtime_error("no view");
  const auto window = *static_cast<const std::uint32_t*>(view);
  const xcb_window_t host = openWindow(server, place.x, place.y, place.width, place.height);
  server.finish();  // the view belongs to another connection: the window must be there for it
  xcb_reparent_window(server.get(), window, host, 0, 0);
  xcb_map_window(server.get(), window);
  server.finish();
}

}  // namespace vlm::bench
