#pragma once

#include <memory>

#include "platform/dispatch.h"

namespace vlm::platform::glib {

// The queue whose jobs run in GLib's default main context, on whichever thread iterates it: the
// process's first one.
std::shared_ptr<DispatchQueue> mainQueue();

}  // namespace vlm::platform::glib
