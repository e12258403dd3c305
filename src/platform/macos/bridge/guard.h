#pragma once

#include <memory>
#include <optional>
#include <string>
#include <type_traits>

#include "platform/foundation.h"

// Makes the call inside an autorelease pool. When an Objective-C exception ends it, writes the
// exception's reason and answers false. A C++ exception passes. This function alone has @catch.
extern "C" bool vlmCallGuarded(void (*call)(void*), void* context, std::string* reason);

namespace vlm::platform::bridge {

// What a framework's call threw, as an error; nothing when it returned. A block that outlives the
// call is written outside of it: inside a lambda it would take what that refers to by reference.
template <class Call>
std::optional<NSError> guarded(Call&& call) {
  using Function = std::remove_reference_t<Call>;
  std::string reason;
  if (vlmCallGuarded([](void* context) { (*static_cast<Function*>(context))(); },
                     std::addressof(call), &reason)) {
    return std::nullopt;
  }
  return NSError{std::move(reason)};
}

}  // namespace vlm::platform::bridge
