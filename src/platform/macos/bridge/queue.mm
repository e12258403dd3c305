#include "platform/macos/bridge/queue.h"

#import <Foundation/Foundation.h>
#include <utility>

namespace vlm::platform::bridge {

namespace {

using Job = std::function<void()>;

void runAndDelete(void* context) {
  @autoreleasepool {
    const std::unique_ptr<Job> job(static_cast<Job*>(context));
    (*job)();
  }
}

void run(void* context) {
  @autoreleasepool {
    (*static_cast<const Job*>(context))();
  }
}

}  // namespace

Queue::Queue(std::string label, dispatch_queue_t queue) : label_(std::move(label)), queue_(queue) {}

Queue::~Queue() {
  dispatch_release(queue_);
}

void Queue::async(Job job) {
  ::dispatch_async_f(queue_, new Job(std::move(job)), runAndDelete);
}

void Queue::sync(const Job& job) {
  ::dispatch_sync_f(queue_, const_cast<Job*>(&job), run);
}

void releaseOnMainThread(void* object, void (*release)(void*)) {
  if ([::NSThread isMainThread]) {
    release(object);
  } else {
    ::dispatch_async_f(::dispatch_get_main_queue(), object, release);
  }
}

}  // namespace vlm::platform::bridge
