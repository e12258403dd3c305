#include "VelmoraMacNative.h"

namespace {
constexpr int32_t kAbiVersion = 3;
}

int32_t vlm_abi_version(void) {
  return kAbiVersion;
}
