// The clipboard's text: notices when a program of this display copies one, and offers one that came
// from the other side.
#pragma once

#include <array>

#include "protocol.h"
#include "x.h"

namespace remote {

class Clipboard {
 public:
  using Copied = std::function<void(const Bytes& text)>;

  Clipboard(X& x, Copied copied) : x_(x), copied_(std::move(copied)), window_(x.hiddenWindow()) {
    xcb_xfixes_select_selection_input(x_.get(), window_, clipboard_,
                                      XCB_XFIXES_SELECTION_EVENT_MASK_SET_SELECTION_OWNER);
    x_.addHandler([this](const xcb_generic_event_t& event) { handle(event); });
    askForText();
  }

  void askForText() {
    xcb_convert_selection(x_.get(), window_, clipboard_, utf8_, property_, XCB_CURRENT_TIME);
    x_.flush();
  }

  // From the other side.
  void offer(const std::string& text) {
    offered_ = text;
    xcb_set_selection_owner(x_.get(), window_, clipboard_, XCB_CURRENT_TIME);
    x_.flush();
  }

 private:
  void handle(const xcb_generic_event_t& event) {
    if (event.response_type == x_.firstXfixesEvent() + XCB_XFIXES_SELECTION_NOTIFY) {
      const auto& change = as<xcb_xfixes_selection_notify_event_t>(event);
      if (change.selection == clipboard_ && change.owner != window_) askForText();
    } else if (event.response_type == XCB_SELECTION_NOTIFY) {
      const auto& answer = as<xcb_selection_notify_event_t>(event);
      if (answer.requestor == window_ && answer.property != XCB_ATOM_NONE) takeText();
    } else if (event.response_type == XCB_SELECTION_REQUEST) {
      answer(as<xcb_selection_request_event_t>(event));
    }
  }

  // Texts that come in pieces are longer than what is passed on, and so are left alone.
  void takeText() {
    const auto value =
        x_.ask(xcb_get_property_reply, xcb_get_property(x_.get(), 1, window_, property_, utf8_, 0,
                                                        static_cast<u32>(kLongestText / 4)));
    if (!value || value->type != utf8_ || value->bytes_after > 0) return;
    const auto* text = static_cast<const u8*>(xcb_get_property_value(value.get()));
    const ByteView view(text, static_cast<std::size_t>(xcb_get_property_value_length(value.get())));
    if (isText(view)) copied_(Bytes(view.begin(), view.end()));
  }

  void answer(const xcb_selection_request_event_t& request) {
    xcb_selection_notify_event_t reply{};
    reply.response_type = XCB_SELECTION_NOTIFY;
    reply.time = request.time;
    reply.requestor = request.requestor;
    reply.selection = request.selection;
    reply.target = request.target;
    // Clients of old leave the property to the owner.
    reply.property = request.property == XCB_ATOM_NONE ? request.target : request.property;
    if (request.target == targets_) {
      const std::array offered{targets_, utf8_};
      xcb_change_property(x_.get(), XCB_PROP_MODE_REPLACE, request.requestor, reply.property,
                          XCB_ATOM_ATOM, 32, offered.size(), offered.data());
    } else if (request.target == utf8_) {
      xcb_change_property(x_.get(), XCB_PROP_MODE_REPLACE, request.requestor, reply.property, utf8_,
                          8, static_cast<u32>(offered_.size()), offered_.data());
    } else {
      reply.property = XCB_ATOM_NONE;
    }
    xcb_send_event(x_.get(), 0, request.requestor, 0, reinterpret_cast<const char*>(&reply));
    x_.flush();
  }

  X& x_;
  const Copied copied_;
  const xcb_window_t window_;
  const xcb_atom_t clipboard_ = x_.atom("CLIPBOARD");
  const xcb_atom_t utf8_ = x_.atom("UTF8_STRING");
  const xcb_atom_t targets_ = x_.atom("TARGETS");
  const xcb_atom_t property_ = x_.atom("REMOTE_CLIPBOARD");
  std::string offered_;
};

}  // namespace remote
