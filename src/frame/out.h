#pragma once

namespace vlm::frame {

// Writes one out-parameter of the boundary; a null pointer skips that value.
template <class T>
void writeOut(T* out, T value) {
  if (out != nullptr) *out = value;
}

}  // namespace vlm::frame
