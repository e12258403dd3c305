#pragma once

#include <variant>

#include "platform/cg_event.h"
#include "platform/portable/object.h"

namespace vlm::platform::input {

struct MouseInput {
  CGEventType type;
  CGPoint position;
};

struct ScrollInput {
  std::int32_t vertical = 0;  // pixels; up and left are positive
  std::int32_t horizontal = 0;
};

struct KeyInput {
  std::uint16_t keyCode = 0;
  bool down = false;
};

class Event : public Object {
 public:
  using Input = std::variant<std::monostate, MouseInput, ScrollInput, KeyInput>;
  explicit Event(Input what, CGPoint at = {}) : input(what), location(at) {}

  const Input input;
  const CGPoint location;
  CGEventFlags flags = 0;
};

}  // namespace vlm::platform::input
