#include "platform/linux/core_foundation.h"

namespace vlm::platform {

void CFRunLoopAddSourceToMain(CFRunLoopSource& source) {
  source.add();
}

void CFRunLoopRemoveSourceFromMain(CFRunLoopSource& source) {
  source.remove();
}

}  // namespace vlm::platform
