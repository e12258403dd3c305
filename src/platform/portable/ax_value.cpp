#include "platform/application_services.h"

namespace vlm::platform {
namespace {

template <class T>
bool get(const CFValue& value, T& out) {
  const auto* held = value.as<T>();
  if (held != nullptr) out = *held;
  return held != nullptr;
}

}  // namespace

bool AXValueGetValue(const CFValue& value, CGPoint& out) {
  return get(value, out);
}

bool AXValueGetValue(const CFValue& value, CGSize& out) {
  return get(value, out);
}

}  // namespace vlm::platform
