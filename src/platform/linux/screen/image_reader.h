#pragma once

#include <xcb/xcb.h>

#include <memory>
#include <span>
#include <vector>

#include "platform/linux/screen/source.h"
#include "platform/linux/x11/connection.h"
#include "platform/linux/x11/reply.h"
#include "platform/linux/x11/shared_pixels.h"

namespace vlm::platform::screen {

// Reads rectangles of windows and pixmaps, any number in one round trip, through shared memory
// where the server has it.
class ImageReader {
 public:
  explicit ImageReader(const x11::Connection& connection) : connection_(connection) {}

  struct Request {
    xcb_drawable_t drawable = XCB_NONE;
    Rectangle area;  // within the drawable
  };
  // One view for each request, without data where the server refused. They are valid until the
  // next call.
  std::span<const PlaneView> read(std::span<const Request> requests);

 private:
  bool reserve(std::size_t size);
  void readShared(std::span<const Request> requests);
  void readThroughConnection(std::span<const Request> requests);

  const x11::Connection& connection_;
  std::unique_ptr<x11::SharedPixels> shared_;
  bool canShare_ = true;
  std::vector<x11::Reply<xcb_get_image_reply_t>> replies_;
  std::vector<PlaneView> views_;
};

}  // namespace vlm::platform::screen
