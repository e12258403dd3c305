#include "platform/core_foundation.h"

#include "platform/scripted/machine/machine.h"

namespace vlm::platform {

using scripted::Machine;

void helpers::addToMainRunLoop(CFRunLoopSource& source) {
  Machine::current().journal.enter("CFRunLoopAddSource");
  source.added = true;
}

void helpers::removeFromMainRunLoop(CFRunLoopSource& source) {
  Machine::current().journal.enter("CFRunLoopRemoveSource");
  source.added = false;
}

}  // namespace vlm::platform
