#include "codec/delivery_order.h"

#include <utility>

#include "frame/await.h"
#include "frame/guard.h"

namespace vlm::codec {

DeliveryOrder::Place::~Place() {
  deliver(nullptr);
}

void DeliveryOrder::Place::deliver(std::function<void()> delivery) {
  if (const auto order = std::exchange(order_, nullptr)) {
    order->finish(number_, std::move(delivery));
  }
}

std::shared_ptr<DeliveryOrder::Place> DeliveryOrder::append() {
  auto place = std::make_shared<Place>();
  const platform::MutexLock lock(mutex_);
  entries_.emplace_back();
  place->number_ = firstNumber_ + entries_.size() - 1;
  place->order_ = shared_from_this();
  return place;
}

void DeliveryOrder::wait() {
  frame::await<bool>([this](std::function<void(bool)> answer) {
    {
      const platform::MutexLock lock(mutex_);
      if (!entries_.empty()) {
        whenEmpty_ = [answer = std::move(answer)] { answer(true); };
        return;
      }
    }
    answer(true);
  });
}

void DeliveryOrder::finish(std::uint64_t number, std::function<void()> delivery) {
  std::function<void()> due;
  bool delivers = false;
  {
    const platform::MutexLock lock(mutex_);
    entries_[static_cast<std::size_t>(number - firstNumber_)] = {true, std::move(delivery)};
    if (isDelivering_) return;
    due = takeDue();
    delivers = isDelivering_;
  }
  while (delivers) {
    frame::guarded(due);
    due = nullptr;  // what it owns ends without the lock
    const platform::MutexLock lock(mutex_);
    removeFirst();
    due = takeDue();
    delivers = isDelivering_;
  }
  if (due) due();
}

// What the calling thread runs next, without the lock: the delivery whose turn it is, or else, when
// all are done, what waits for that.
std::function<void()> DeliveryOrder::takeDue() {
  while (!entries_.empty() && entries_.front().isDone && !entries_.front().delivery) removeFirst();
  isDelivering_ = !entries_.empty() && entries_.front().isDone;
  if (isDelivering_) return std::move(entries_.front().delivery);
  return entries_.empty() ? std::exchange(whenEmpty_, nullptr) : nullptr;
}

void DeliveryOrder::removeFirst() {
  entries_.pop_front();
  ++firstNumber_;
}

}  // namespace vlm::codec
