#include "platform/linux/desktop/applications.h"

#include <algorithm>

#include "platform/linux/x11/display.h"
#include "platform/linux/x11/window_list.h"

namespace vlm::platform::desktop {
namespace {

std::optional<NSRunningApplication> applicationOf(const x11::Window& window) {
  if (window.processId == 0) return std::nullopt;
  return NSRunningApplication{window.className, window.processId};
}

}  // namespace

std::vector<NSRunningApplication> runningApplications() {
  using Answer = std::vector<NSRunningApplication>;
  return x11::Display::shared().with<Answer>({}, [](const x11::Connection& connection) {
    Answer applications;
    for (const auto& window : x11::listManagedWindows(connection)) {
      const auto application = applicationOf(window);
      const auto isSame = [&](const NSRunningApplication& each) {
        return application && each.processIdentifier == application->processIdentifier &&
               each.bundleIdentifier == application->bundleIdentifier;
      };
      if (application && std::ranges::none_of(applications, isSame)) {
        applications.push_back(*application);
      }
    }
    return applications;
  });
}

std::optional<NSRunningApplication> frontmostApplication() {
  using Answer = std::optional<NSRunningApplication>;
  return x11::Display::shared().with<Answer>({}, [](const x11::Connection& connection) {
    const auto active = x11::activeWindow(connection);
    const auto window = active == XCB_NONE ? std::nullopt : x11::describeWindow(connection, active);
    return window ? applicationOf(*window) : Answer();
  });
}

}  // namespace vlm::platform::desktop
