#include "platform/linux/view/window_image.h"

#include <algorithm>
#include <cstddef>

#include "platform/linux/view/view_window.h"
#include "platform/linux/x11/event.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::view {
namespace {

// The server's answer to a request it has just got comes when it has done all the earlier ones.
void waitForServer(xcb_connection_t* connection) {
  const x11::Reply<xcb_get_input_focus_reply_t> done(
      xcb_get_input_focus_reply(connection, xcb_get_input_focus(connection), nullptr));
}

}  // namespace

PixelTarget WindowImage::reserve(int width, int height) {
  const std::size_t bytes = static_cast<std::size_t>(width) * height * 4;
  // Kept while it fits, so that a window drawn larger does not cost a new one at every step; given
  // up when most of it is unused.
  if (canShare_ && (!shared_ || shared_->size() < bytes || shared_->size() / 4 > bytes)) {
    shared_ = nullptr;
    shared_ = x11::SharedPixels::make(connection_, bytes + bytes / 4);
    canShare_ = shared_ != nullptr;
  }
  if (shared_) return PixelTarget::over(shared_->data(), width, height);
  own_.resize(bytes);
  return PixelTarget::over(own_.data(), width, height);
}

void WindowImage::put(const PixelTarget& target, xcb_window_t window, xcb_gcontext_t context) {
  if (shared_) {
    putShared(target, window, context);
  } else {
    putThroughConnection(target, window, context);
  }
}

void WindowImage::putShared(const PixelTarget& target, xcb_window_t window,
                            xcb_gcontext_t context) {
  const auto width = static_cast<std::uint16_t>(target.width);
  const auto height = static_cast<std::uint16_t>(target.height);
  const auto cookie = xcb_shm_put_image(connection_, window, context, width, height, 0, 0, width,
                                        height, 0, 0, ViewWindow::kDepth, XCB_IMAGE_FORMAT_Z_PIXMAP,
                                        /*send_event=*/1, shared_->segment(), /*offset=*/0);
  sequence_ = cookie.sequence;
  underWay_ = true;
}

void WindowImage::putThroughConnection(const PixelTarget& target, xcb_window_t window,
                                       xcb_gcontext_t context) {
  constexpr std::size_t kHeader = sizeof(xcb_put_image_request_t) + 4;  // of a long request
  const std::size_t longest = xcb_get_maximum_request_length(connection_) * std::size_t{4};
  if (longest < kHeader + target.stride) return;  // a lost server takes nothing
  const int rowsAtOnce = static_cast<int>((longest - kHeader) / target.stride);
  for (int row = 0; row < target.height; row += rowsAtOnce) {
    const int rows = std::min(rowsAtOnce, target.height - row);
    xcb_put_image(connection_, XCB_IMAGE_FORMAT_Z_PIXMAP, window, context,
                  static_cast<std::uint16_t>(target.width), static_cast<std::uint16_t>(rows), 0,
                  static_cast<std::int16_t>(row), 0, ViewWindow::kDepth,
                  static_cast<std::uint32_t>(rows * target.stride),
                  target.row(static_cast<std::size_t>(row)));
  }
  waitForServer(connection_);
}

WindowImage::Outcome WindowImage::handle(const xcb_generic_event_t& event) {
  if (!underWay_) return Outcome::none;
  const bool shown =
      x11::typeOf(event) == firstEventOf(connection_, x11::Extension::memory) + XCB_SHM_COMPLETION;
  const bool refused = event.response_type == 0 && event.full_sequence == sequence_;
  if (!shown && !refused) return Outcome::none;
  underWay_ = false;
  return shown ? Outcome::shown : Outcome::refused;
}

}  // namespace vlm::platform::view
