#pragma once

#include "platform/ref.h"

namespace vlm::platform {

// Something that the main run loop waits for. Counted.
class CFRunLoopSource;

// Ours, on top of the operations that their comments name.
namespace helpers {

// CFRunLoopAddSource and CFRunLoopRemoveSource with CFRunLoopGetMain and the default mode. A source
// delivers only while it is added and the host runs the loop. Any thread; adding twice or removing
// what is not there does nothing.
void addToMainRunLoop(CFRunLoopSource& source);
void removeFromMainRunLoop(CFRunLoopSource& source);

}  // namespace helpers

}  // namespace vlm::platform
