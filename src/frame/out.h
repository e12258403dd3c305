#pragma once

#include <optional>

#include "platform/core_graphics.h"

namespace vlm::frame {

// Writes one out-parameter of the boundary; a null pointer skips that value.
template <class T>
void writeOut(T* out, T value) {
  if (out != nullptr) *out = value;
}

// Writes a rectangle's four out-parameters. False, with nothing written, when there is none.
inline bool writeRect(const std::optional<platform::CGRect>& rect, double* x, double* y,
                      double* width, double* height) {
  if (!rect) return false;
  writeOut(x, rect->origin.x);
  writeOut(y, rect->origin.y);
  writeOut(width, rect->size.width);
  writeOut(height, rect->size.height);
  return true;
}

}  // namespace vlm::frame
