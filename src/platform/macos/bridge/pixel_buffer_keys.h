#pragma once

#include "platform/macos/bridge/values.h"

namespace vlm::platform::bridge {

// The names of pixel buffer attributes, for buffers and for what a decoder makes.
Keys pixelBufferKeys();

}  // namespace vlm::platform::bridge
