#include "platform/cg_window.h"

#include "platform/scripted/machine/machine.h"

namespace vlm::platform {

using scripted::Machine;

std::optional<CFArray> CGWindowListCopyWindowInfo(CGWindowListOption options,
                                                  CGWindowID relativeToWindow) {
  auto& machine = Machine::current();
  machine.journal.enter("CGWindowListCopyWindowInfo", {options, relativeToWindow});
  return machine.desktop.windowList;
}

}  // namespace vlm::platform
