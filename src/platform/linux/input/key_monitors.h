#pragma once

#include <functional>
#include <memory>

#include "platform/app_kit.h"

namespace vlm::platform::input {

// Reports key presses that go to this process (local) or those that go to all others. Null when the
// display can't be reached or does not record. Main thread.
std::shared_ptr<NSEventMonitor> addKeyMonitor(bool local,
                                              std::function<void(const NSEvent&)> handler);
// No handler of the monitor runs after this. Main thread.
void removeKeyMonitor(NSEventMonitor& monitor);

}  // namespace vlm::platform::input
