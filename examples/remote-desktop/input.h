// Does on the shared display what the viewer's person does, and lets go of everything in the end.
#pragma once

#include <set>

#include "protocol.h"
#include "target.h"

namespace remote {

class Input {
 public:
  explicit Input(const Target& target) : target_(target) {
    clock_ = Source::every(Milliseconds(250), [this] {
      // A link that breaks while a key is down must not leave it down.
      if (Clock::now() - lastHeard_ > kLongestHold) releaseAll();
    });
  }
  ~Input() { releaseAll(); }

  void heard() { lastHeard_ = Clock::now(); }

  void apply(const Pointer& message) {
    const auto [x, y] = message;
    const auto place = at(x, y);
    vlm_input_mouse_move(place.x, place.y);
  }

  void apply(const Button& message) {
    const auto [button, down, x, y] = message;
    if (button > 2 || down > 1) throw Malformed("no such button");
    const auto place = at(x, y);
    const bool isHeld = buttons_.contains(button);
    if (isHeld == (down == 1)) return;
    down == 1 ? void(buttons_.insert(button)) : void(buttons_.erase(button));
    vlm_input_mouse_button(button, down == 1, place.x, place.y);
  }

  void apply(const Wheel& message) {
    const auto [horizontal, vertical] = message;
    vlm_input_mouse_wheel(kStep * horizontal, kStep * vertical);
  }

  void apply(const Key& message) {
    const auto [code, down, flags] = message;
    if (code > 0x7F || down > 1) throw Malformed("no such key");
    const bool isHeld = keys_.contains(code);
    if (isHeld == (down == 1)) return;
    down == 1 ? void(keys_.insert(code)) : void(keys_.erase(code));
    vlm_input_key(code, down == 1, flags);
  }

 private:
  static constexpr auto kLongestHold = std::chrono::seconds(2);
  static constexpr double kStep = 40;  // the library's pixels in a step of the wheel

  Frame at(u16 x, u16 y) const {
    const auto frame = target_.frame();
    return {frame.x + std::min<double>(x, frame.width - 1),
            frame.y + std::min<double>(y, frame.height - 1)};
  }

  void releaseAll() {
    double x = 0, y = 0;
    vlm_input_cursor_pos(&x, &y);
    for (const u8 button : std::exchange(buttons_, {})) vlm_input_mouse_button(button, false, x, y);
    for (const u16 key : std::exchange(keys_, {})) vlm_input_key(key, false, 0);
  }

  const Target& target_;
  std::set<u8> buttons_;
  std::set<u16> keys_;
  Clock::time_point lastHeard_ = Clock::now();
  Source clock_;
};

}  // namespace remote
