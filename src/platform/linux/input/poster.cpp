#include "platform/linux/input/poster.h"

#include <xcb/xtest.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "platform/integer.h"
#include "platform/linux/input/button.h"
#include "platform/linux/input/keyboard.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::input {
namespace {

constexpr std::uint8_t kWheelUp = 4;
constexpr std::uint8_t kWheelDown = 5;
constexpr std::uint8_t kWheelLeft = 6;
constexpr std::uint8_t kWheelRight = 7;
void moveTo(const x11::Connection& connection, CGPoint position) {
  xcb_test_fake_input(connection.get(), XCB_MOTION_NOTIFY, 0, XCB_CURRENT_TIME,
                      connection.screen().root, coordinate(position.x), coordinate(position.y), 0);
}

// The button of the device that the user's own mapping makes this one: of left-handed people, of
// those who scroll the other way.
std::uint8_t deviceButton(const x11::Connection& connection, std::uint8_t button) {
  const auto asked = xcb_get_pointer_mapping(connection.get());
  const x11::Reply<xcb_get_pointer_mapping_reply_t> reply(
      xcb_get_pointer_mapping_reply(connection.get(), asked, nullptr));
  if (!reply) return button;
  const auto* first = xcb_get_pointer_mapping_map(reply.get());
  const auto* end = first + xcb_get_pointer_mapping_map_length(reply.get());
  const auto* found = std::find(first, end, button);
  return found == end ? button : static_cast<std::uint8_t>(found - first + 1);
}

void fakeButton(const x11::Connection& connection, std::uint8_t button, bool down) {
  xcb_test_fake_input(connection.get(), down ? XCB_BUTTON_PRESS : XCB_BUTTON_RELEASE, button,
                      XCB_CURRENT_TIME, XCB_NONE, 0, 0, 0);
}

void turnWheel(const x11::Connection& connection, std::int32_t steps, std::uint8_t positive,
               std::uint8_t negative) {
  if (steps == 0) return;
  const auto button = deviceButton(connection, steps > 0 ? positive : negative);
  for (std::int32_t i = std::min(std::abs(steps), WheelAxis::kMostSteps); i > 0; --i) {
    fakeButton(connection, button, true);
    fakeButton(connection, button, false);
  }
}

bool isMove(const Event& event) {
  const auto* input = std::get_if<MouseInput>(&event.input);
  return input != nullptr && input->type == CGEventType::mouseMoved;
}

// The server drops what it has not read yet when a client goes. A release lost to a process that
// ends right after it would leave the key down for every program.
void waitForServer(const x11::Connection& connection) {
  const auto asked = xcb_get_input_focus(connection.get());
  const x11::Reply<xcb_get_input_focus_reply_t> reply(
      xcb_get_input_focus_reply(connection.get(), asked, nullptr));
}

}  // namespace

std::int16_t coordinate(double points) {
  return truncated<std::int16_t>(std::floor(points));
}

void Poster::post(const x11::Connection& connection, unsigned generation, const Event& event) {
  if (generation != generation_) {
    generation_ = generation;
    modifiers_ = {};
    pressed_.reset();
    supported_ = supports(connection, x11::Extension::test);
  }
  if (!supported_) return;
  if (const auto* input = std::get_if<MouseInput>(&event.input)) mouse(connection, *input);
  if (const auto* input = std::get_if<ScrollInput>(&event.input)) scroll(connection, *input);
  if (const auto* input = std::get_if<KeyInput>(&event.input)) key(connection, *input, event.flags);
  if (isMove(event)) {
    xcb_flush(connection.get());
  } else {
    waitForServer(connection);
  }
}

void Poster::mouse(const x11::Connection& connection, const MouseInput& input) {
  moveTo(connection, input.position);
  if (const auto change = buttonChangeOf(input.type)) {
    // X counts left, middle, right from 1.
    const auto number = static_cast<std::uint8_t>(static_cast<int>(change->button) + 1);
    fakeButton(connection, deviceButton(connection, number), change->down);
  }
}

void Poster::scroll(const x11::Connection& connection, const ScrollInput& input) {
  turnWheel(connection, vertical_.turn(input.vertical), kWheelUp, kWheelDown);
  turnWheel(connection, horizontal_.turn(input.horizontal), kWheelLeft, kWheelRight);
}

void Poster::key(const x11::Connection& connection, const KeyInput& input, CGEventFlags flags) {
  const auto keyboard = Keyboard::ask(connection);
  const auto keycode = keyboard ? keyboard->keycodeOf(input.keyCode) : std::nullopt;
  if (!keycode) return;
  if (keyboard->isModifier(*keycode)) {
    // Its flags say what it makes of the keyboard, not how it is to be seen.
    modifiers_.leave(*keycode);
    fakeKey(connection, *keycode, input.down);
    return;
  }
  modifiers_.take(connection, *keyboard, flags, input.down);
  // A key that is down already is pressed as the server repeats it, released first.
  if (!input.down || heldKeys(connection).test(*keycode)) fakeKey(connection, *keycode, false);
  if (input.down) {
    fakeKey(connection, *keycode, true);
    pressed_ = *keycode;
  } else if (!pressed_ || pressed_ == keycode) {
    modifiers_.giveBack(connection, *keyboard);
    pressed_.reset();
  }
}

}  // namespace vlm::platform::input
