#include "platform/linux/input/key_recorder.h"

#include <xcb/xcbext.h>

#include <cstddef>
#include <utility>

#include "platform/linux/x11/broken_pipe.h"
#include "platform/linux/x11/event.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::input {
namespace {

constexpr std::uint8_t kCategoryFromServer = 0;
constexpr std::size_t kEventSize = 32;

bool canRecord(const x11::Connection& connection) {
  return supports(connection, x11::Extension::record);
}

}  // namespace

std::unique_ptr<KeyRecorder> KeyRecorder::start(Handler handler) {
  const x11::BrokenPipeGuard guard;
  auto control = x11::Connection::open();
  auto stream = x11::Connection::open();
  if (!control || !stream || !canRecord(*control) || !canRecord(*stream)) return nullptr;
  std::unique_ptr<KeyRecorder> recorder(
      new KeyRecorder(std::move(control), std::move(stream), std::move(handler)));
  return recorder->enable() ? std::move(recorder) : nullptr;
}

KeyRecorder::KeyRecorder(std::unique_ptr<x11::Connection> control,
                         std::unique_ptr<x11::Connection> stream, Handler handler)
    : control_(std::move(control)), stream_(std::move(stream)), handler_(std::move(handler)) {}

bool KeyRecorder::enable() {
  context_ = xcb_generate_id(control_->get());
  xcb_record_range_t range{};
  range.device_events = {XCB_KEY_PRESS, XCB_KEY_PRESS};
  const xcb_record_client_spec_t everybody = XCB_RECORD_CS_ALL_CLIENTS;
  const auto made =
      xcb_record_create_context_checked(control_->get(), context_, 0, 1, 1, &everybody, &range);
  const x11::Reply<xcb_generic_error_t> error(xcb_request_check(control_->get(), made));
  if (error || control_->isLost()) return false;
  sequence_ = xcb_record_enable_context(stream_->get(), context_).sequence;
  xcb_flush(stream_->get());
  source_ = makeRef<glib::DescriptorSource>(stream_->descriptor(), [this] {
    read();
    return false;
  });
  source_->add();
  return true;
}

KeyRecorder::~KeyRecorder() {
  *ended_ = true;
  if (source_) source_->remove();
  const x11::BrokenPipeGuard guard;
  xcb_record_disable_context(control_->get(), context_);
  xcb_record_free_context(control_->get(), context_);
  xcb_flush(control_->get());
}

void KeyRecorder::read() {
  const auto ended = ended_;
  // Told without the guard: a program that the host starts would inherit it.
  for (const auto key : takePresses()) {
    if (!*ended) handler_(key);
  }
}

std::vector<xcb_keycode_t> KeyRecorder::takePresses() {
  const x11::BrokenPipeGuard guard;
  std::vector<xcb_keycode_t> presses;
  void* reply = nullptr;
  xcb_generic_error_t* error = nullptr;
  while (xcb_poll_for_reply(stream_->get(), sequence_, &reply, &error) == 1) {
    const x11::Reply<xcb_record_enable_context_reply_t> piece(
        static_cast<xcb_record_enable_context_reply_t*>(reply));
    const x11::Reply<xcb_generic_error_t> refused(error);
    if (!piece) break;
    addPresses(*piece, presses);
  }
  return presses;
}

void KeyRecorder::addPresses(const xcb_record_enable_context_reply_t& reply,
                             std::vector<xcb_keycode_t>& presses) {
  if (reply.category != kCategoryFromServer) return;
  const auto* data = xcb_record_enable_context_data(&reply);
  const auto size = static_cast<std::size_t>(xcb_record_enable_context_data_length(&reply));
  for (std::size_t at = 0; at + kEventSize <= size; at += kEventSize) {
    const auto& event = *reinterpret_cast<const xcb_key_press_event_t*>(data + at);
    if (x11::typeOf(event) == XCB_KEY_PRESS) presses.push_back(event.detail);
  }
}

}  // namespace vlm::platform::input
