#include "platform/core_graphics.h"

#include "platform/scripted/machine/question.h"

namespace vlm::platform {

bool CGPreflightScreenCaptureAccess() {
  return scripted::ask("CGPreflightScreenCaptureAccess").mayRecordScreen;
}

bool CGRequestScreenCaptureAccess() {
  return scripted::ask("CGRequestScreenCaptureAccess").grantsScreenOnRequest;
}

}  // namespace vlm::platform
