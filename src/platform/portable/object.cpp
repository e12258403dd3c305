#include "platform/portable/object.h"

namespace vlm::platform {

void CFRetain(const void* object) noexcept {
  if (object != nullptr) static_cast<const Object*>(object)->retain();
}

void CFRelease(const void* object) noexcept {
  if (object != nullptr) static_cast<const Object*>(object)->release();
}

}  // namespace vlm::platform
