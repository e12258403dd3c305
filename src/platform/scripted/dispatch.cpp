#include "platform/dispatch.h"

#include <utility>

#include "platform/scripted/machine/machine.h"

namespace vlm::platform {

using scripted::Machine;

std::shared_ptr<DispatchQueue> dispatch_queue_create(std::string label, DispatchQoS qos) {
  const CFValue urgency = qos == DispatchQoS::userInteractive ? "userInteractive"
                          : qos == DispatchQoS::userInitiated ? "userInitiated"
                                                              : "standard";
  Machine::current().journal.enter("dispatch_queue_create", {label, urgency});
  return Machine::current().makeQueue(std::move(label));
}

std::shared_ptr<DispatchQueue> dispatch_get_main_queue() {
  return Machine::current().mainQueue();
}

std::shared_ptr<DispatchSemaphore> dispatch_semaphore_create(int count) {
  return Machine::current().makeSemaphore(count);
}

}  // namespace vlm::platform
