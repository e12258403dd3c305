#pragma once

#include <optional>

#include "platform/linux/input/keyboard.h"

namespace vlm::platform::input {

// What holds keys down. The keyboard that clients see is the sum of both.
struct DeviceKeys {
  KeySet hardware;  // on a person's keyboards
  KeySet posted;    // by programs, through XTEST
};

// Nothing when the server can't say.
std::optional<DeviceKeys> deviceKeys(const x11::Connection& connection);

}  // namespace vlm::platform::input
