// X11 grants every client everything that its server offers. So the truth about a right is whether
// the display can be reached and has the extensions that stand behind it.
#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/xfixes.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <initializer_list>

#include "platform/application_services.h"
#include "platform/core_graphics.h"
#include "platform/linux/x11/broken_pipe.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform {
namespace {

bool displayHas(std::initializer_list<xcb_extension_t*> extensions) {
  const x11::BrokenPipeGuard guard;
  const auto connection = x11::Connection::open();
  if (!connection) return false;
  for (auto* extension : extensions) xcb_prefetch_extension_data(connection->get(), extension);
  return std::ranges::all_of(extensions, [&](xcb_extension_t* extension) {
    const auto* data = xcb_get_extension_data(connection->get(), extension);
    return data != nullptr && data->present != 0;
  });
}

}  // namespace

bool CGPreflightScreenCaptureAccess() {
  return displayHas({&xcb_damage_id, &xcb_composite_id, &xcb_randr_id, &xcb_xfixes_id});
}

// There is nobody to ask: the answer stays what it is.
bool CGRequestScreenCaptureAccess() {
  return CGPreflightScreenCaptureAccess();
}

bool AXIsProcessTrusted() {
  return displayHas({&xcb_test_id});
}

bool AXIsProcessTrustedWithOptions(const CFValue&) {
  return AXIsProcessTrusted();
}

}  // namespace vlm::platform
