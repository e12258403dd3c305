// The pointer's place and shape on the shared display, which are not part of its pictures.
#pragma once

#include "channel.h"
#include "target.h"
#include "x.h"

namespace remote {

class CursorWatch {
 public:
  CursorWatch(X& x, const Target& target, Channel& channel)
      : x_(x), target_(target), channel_(channel) {
    xcb_xfixes_select_cursor_input(x_.get(), x_.root(),
                                   XCB_XFIXES_CURSOR_NOTIFY_MASK_DISPLAY_CURSOR);
    // Nothing announces a moved pointer.
    clock_ = Source::every(Milliseconds(25), [this] { sendPlace(); });
    sendShape();
  }

  void handle(const xcb_generic_event_t& event) {
    if (event.response_type == x_.firstXfixesEvent() + XCB_XFIXES_CURSOR_NOTIFY) sendShape();
  }

 private:
  void sendPlace() {
    double x = 0, y = 0;
    if (channel_.queued() > 0 || !vlm_input_cursor_pos(&x, &y)) return;
    const auto frame = target_.frame();
    const auto left = static_cast<std::int16_t>(x - frame.x);
    const auto top = static_cast<std::int16_t>(y - frame.y);
    const bool isInside =
        x >= frame.x && y >= frame.y && x < frame.x + frame.width && y < frame.y + frame.height;
    // Where the pointer is outside does not concern the viewer.
    const auto place = isInside ? CursorPlace{left, top, u8{1}} : CursorPlace{};
    if (place != std::exchange(sent_, place)) channel_.send(place);
  }

  void sendShape() {
    const auto image =
        x_.ask(xcb_xfixes_get_cursor_image_reply, xcb_xfixes_get_cursor_image(x_.get()));
    if (!image || image->width == 0 || image->height == 0 || image->width > kLargestCursor ||
        image->height > kLargestCursor) {
      return;
    }
    const auto* pixels = xcb_xfixes_get_cursor_image_cursor_image(image.get());
    Bytes bytes;
    for (int i = 0; i < image->width * image->height; ++i) {
      for (int shift = 0; shift < 32; shift += 8)
        bytes.push_back(static_cast<u8>(pixels[i] >> shift));
    }
    const u16 hotX = std::min<u16>(image->xhot, image->width - 1);
    const u16 hotY = std::min<u16>(image->yhot, image->height - 1);
    channel_.send(CursorShape{image->width, image->height, hotX, hotY, std::move(bytes)});
  }

  X& x_;
  const Target& target_;
  Channel& channel_;
  CursorPlace sent_{};
  Source clock_;
};

}  // namespace remote
