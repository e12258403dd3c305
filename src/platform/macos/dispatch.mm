#include "platform/dispatch.h"

#include <dispatch/dispatch.h>

#import <Foundation/Foundation.h>
#include <utility>

#include "platform/macos/bridge/queue.h"

namespace vlm::platform {

namespace {

qos_class_t classOf(DispatchQoS qos) {
  switch (qos) {
    case DispatchQoS::userInteractive:
      return QOS_CLASS_USER_INTERACTIVE;
    case DispatchQoS::userInitiated:
      return QOS_CLASS_USER_INITIATED;
    case DispatchQoS::standard:
      return QOS_CLASS_DEFAULT;
  }
  return QOS_CLASS_DEFAULT;
}

class Semaphore : public DispatchSemaphore {
 public:
  // Counted up from none: a semaphore may not end below the count that it was made with.
  explicit Semaphore(int count) {
    for (int i = 0; i < count; ++i) signal();
  }
  ~Semaphore() override { dispatch_release(semaphore_); }
  Semaphore(const Semaphore&) = delete;
  Semaphore& operator=(const Semaphore&) = delete;

  void wait() override { ::dispatch_semaphore_wait(semaphore_, DISPATCH_TIME_FOREVER); }
  void signal() override { ::dispatch_semaphore_signal(semaphore_); }

 private:
  const dispatch_semaphore_t semaphore_ = ::dispatch_semaphore_create(0);
};

}  // namespace

std::shared_ptr<DispatchQueue> dispatch_queue_create(std::string label, DispatchQoS qos) {
  const auto attributes =
      ::dispatch_queue_attr_make_with_qos_class(DISPATCH_QUEUE_SERIAL, classOf(qos), 0);
  const auto queue = ::dispatch_queue_create(label.c_str(), attributes);
  return std::make_shared<bridge::Queue>(std::move(label), queue);
}

std::shared_ptr<DispatchQueue> dispatch_get_main_queue() {
  const dispatch_queue_t queue = ::dispatch_get_main_queue();
  dispatch_retain(queue);
  return std::make_shared<bridge::Queue>("com.apple.main-thread", queue);
}

std::shared_ptr<DispatchSemaphore> dispatch_semaphore_create(int count) {
  return std::make_shared<Semaphore>(count);
}

}  // namespace vlm::platform
