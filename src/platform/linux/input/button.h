#pragma once

#include <optional>

#include "platform/cg_event.h"

namespace vlm::platform::input {

enum class Button { left, middle, right };

struct ButtonChange {
  Button button;
  bool down;
};

// What an event does to a button; nothing for the other events.
inline std::optional<ButtonChange> buttonChangeOf(CGEventType type) {
  switch (type) {
    case CGEventType::leftMouseDown:
      return ButtonChange{Button::left, true};
    case CGEventType::leftMouseUp:
      return ButtonChange{Button::left, false};
    case CGEventType::otherMouseDown:
      return ButtonChange{Button::middle, true};
    case CGEventType::otherMouseUp:
      return ButtonChange{Button::middle, false};
    case CGEventType::rightMouseDown:
      return ButtonChange{Button::right, true};
    case CGEventType::rightMouseUp:
      return ButtonChange{Button::right, false};
    default:
      return std::nullopt;
  }
}

}  // namespace vlm::platform::input
