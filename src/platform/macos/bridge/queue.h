#pragma once

#include <dispatch/dispatch.h>

#include <functional>
#include <memory>
#include <string>

#include "platform/dispatch.h"

namespace vlm::platform::bridge {

// A queue of the system. Every DispatchQueue is one.
class Queue : public DispatchQueue {
 public:
  // Takes over a reference to `queue`.
  Queue(std::string label, dispatch_queue_t queue);
  ~Queue() override;
  Queue(const Queue&) = delete;
  Queue& operator=(const Queue&) = delete;

  const std::string& label() const override { return label_; }
  void async(std::function<void()> job) override;
  void sync(const std::function<void()>& job) override;

  dispatch_queue_t native() const { return queue_; }

 private:
  const std::string label_;
  const dispatch_queue_t queue_;
};

// Runs `release(object)` on the main thread: at once when this is it, else as soon as it comes to
// that. For objects that may only end there.
void releaseOnMainThread(void* object, void (*release)(void*));

}  // namespace vlm::platform::bridge
