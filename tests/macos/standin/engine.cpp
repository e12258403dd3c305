// Queues for the engine, which needs no main queue.
#define vlm engine
#include "platform/dispatch.h"
#include "platform/portable/thread_queue.h"

namespace engine::platform {

std::shared_ptr<DispatchQueue> dispatch_queue_create(std::string label, DispatchQoS qos) {
  return makeThreadQueue(std::move(label), qos);
}

}  // namespace engine::platform
