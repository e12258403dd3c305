#pragma once

#include "platform/ref.h"

namespace vlm::platform {

// Something that the main run loop waits for. Counted.
class CFRunLoopSource;

// Adds a source to the main run loop, in its default mode, or takes it away again. A source
// delivers only while it is added and the host runs the loop. Any thread; adding twice or removing
// what is not there does nothing.
void CFRunLoopAddSourceToMain(CFRunLoopSource& source);
void CFRunLoopRemoveSourceFromMain(CFRunLoopSource& source);

}  // namespace vlm::platform
