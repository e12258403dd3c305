#include "platform/dispatch.h"

#include <utility>

#include "platform/linux/glib/main_queue.h"
#include "platform/portable/semaphore.h"
#include "platform/portable/thread_queue.h"

namespace vlm::platform {

std::shared_ptr<DispatchQueue> dispatch_queue_create(std::string label, DispatchQoS qos) {
  return makeThreadQueue(std::move(label), qos);
}

std::shared_ptr<DispatchQueue> dispatch_get_main_queue() {
  return glib::mainQueue();
}

std::shared_ptr<DispatchSemaphore> dispatch_semaphore_create(int count) {
  return std::make_shared<ThreadSemaphore>(count);
}

}  // namespace vlm::platform
