#pragma once

#include <memory>
#include <string>

#include "platform/dispatch.h"

namespace vlm::platform {

// A serial queue with its own thread, which has the queue's label as its name. The thread
// ends when the last reference to the queue is gone and everything submitted has run; the last
// reference may go on any thread, the queue's own included.
std::shared_ptr<DispatchQueue> makeThreadQueue(std::string label, DispatchQoS qos);

}  // namespace vlm::platform
