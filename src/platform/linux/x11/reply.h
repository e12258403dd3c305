#pragma once

#include <cstdlib>
#include <memory>

namespace vlm::platform::x11 {

struct FreeReply {
  void operator()(void* reply) const noexcept { std::free(reply); }
};

// What XCB returns from the heap: a reply, an event or an error. Null when there is none.
template <class T>
using Reply = std::unique_ptr<T, FreeReply>;

}  // namespace vlm::platform::x11
