#pragma once

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>

#include "platform/mutex.h"

namespace vlm::codec {

// Brings what several sessions deliver, each on its own thread, into the order of submission, one
// delivery at a time. Any thread.
class DeliveryOrder : public std::enable_shared_from_this<DeliveryOrder> {
 public:
  // The place of one submission. A place that is destroyed without a delivery is skipped.
  class Place {
   public:
    Place() = default;
    ~Place();
    Place(const Place&) = delete;
    Place& operator=(const Place&) = delete;

    // Runs `delivery` when all earlier places are done: at once, or later on the thread that
    // delivers for them. A second call does nothing.
    void deliver(std::function<void()> delivery);

   private:
    friend class DeliveryOrder;
    std::shared_ptr<DeliveryOrder> order_;  // null when the place is done
    std::uint64_t number_ = 0;
  };

  // Makes the place after all others.
  std::shared_ptr<Place> append() VLM_EXCLUDES(mutex_);

  // Waits until every place is done. Not from a delivery, and by one thread at a time.
  void wait() VLM_EXCLUDES(mutex_);

 private:
  struct Entry {
    bool isDone = false;
    std::function<void()> delivery;  // empty for a place that is skipped
  };

  void finish(std::uint64_t number, std::function<void()> delivery) VLM_EXCLUDES(mutex_);
  std::function<void()> takeDue() VLM_REQUIRES(mutex_);
  void removeFirst() VLM_REQUIRES(mutex_);

  platform::Mutex mutex_;
  std::deque<Entry> entries_ VLM_GUARDED_BY(mutex_);
  std::uint64_t firstNumber_ VLM_GUARDED_BY(mutex_) = 0;  // of the first entry
  // A thread runs the delivery of the first entry, and goes on with those after it.
  bool isDelivering_ VLM_GUARDED_BY(mutex_) = false;
  std::function<void()> whenEmpty_ VLM_GUARDED_BY(mutex_);
};

}  // namespace vlm::codec
