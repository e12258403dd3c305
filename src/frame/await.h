#pragma once

#include <functional>
#include <memory>
#include <utility>

#include "platform/dispatch.h"

namespace vlm::frame {

// Makes an asynchronous request and waits, without a time limit, for its one answer. `request` is
// given the function to answer with, which may be called on any thread. What both sides touch is
// shared, so that it outlives whichever is done first.
template <class Answer, class Request>
Answer await(Request&& request) {
  struct Shared {
    std::shared_ptr<platform::DispatchSemaphore> arrived = platform::dispatch_semaphore_create(0);
    Answer answer{};
  };
  auto shared = std::make_shared<Shared>();
  std::forward<Request>(request)([shared](Answer answer) {
    shared->answer = std::move(answer);
    shared->arrived->signal();
  });
  shared->arrived->wait();
  return std::move(shared->answer);
}

}  // namespace vlm::frame
