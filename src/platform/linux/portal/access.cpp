#include "platform/linux/portal/access.h"

#include "platform/linux/portal/consent.h"
#include "platform/linux/portal/screen_cast.h"
#include "platform/linux/portal/sources.h"

namespace vlm::platform::portal {

bool offersScreen() {
  const auto portal = DesktopPortal::reach();
  return portal && offersMonitors(*portal);
}

bool mayCaptureScreen() {
  return !Consent::shared().token().empty() && offersScreen();
}

bool askToCaptureScreen() {
  std::string reason;
  return ScreenCast::open(reason) != nullptr;
}

}  // namespace vlm::platform::portal
