#pragma once

#include <utility>

namespace vlm::frame {

// Runs the body of an exported function, or of a handler that the platform calls. Whatever goes
// wrong in it (memory that can't be had, a lock that can't be taken) becomes the function's failure
// value: nothing is thrown across the boundary or into the platform.
template <class Result, class Body>
Result guarded(Result failure, Body&& body) noexcept {
  try {
    return std::forward<Body>(body)();
  } catch (...) {
    return failure;
  }
}

template <class Body>
void guarded(Body&& body) noexcept {
  try {
    std::forward<Body>(body)();
  } catch (...) {  // NOLINT(bugprone-empty-catch): a function without result has no way to fail
  }
}

}  // namespace vlm::frame
