#include "audio/registry.h"

namespace vlm::audio {

platform::Mutex& audioLock() {
  static auto* const lock = new platform::Mutex();
  return *lock;
}

}  // namespace vlm::audio
