#include "platform/linux/core_foundation.h"

namespace vlm::platform {

void helpers::addToMainRunLoop(CFRunLoopSource& source) {
  source.add();
}

void helpers::removeFromMainRunLoop(CFRunLoopSource& source) {
  source.remove();
}

}  // namespace vlm::platform
