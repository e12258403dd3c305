#include "platform/linux/screen/shareable_content.h"

#include <map>
#include <utility>

#include "platform/linux/glib/log_line.h"
#include "platform/linux/portal/access.h"
#include "platform/linux/screen/core_rectangle.h"
#include "platform/linux/screen/picked_screen.h"
#include "platform/linux/session/session_type.h"
#include "platform/linux/x11/broken_pipe.h"
#include "platform/linux/x11/monitors.h"
#include "platform/linux/x11/window_list.h"

namespace vlm::platform::screen {
namespace {

using Applications =
    std::map<std::pair<std::string, std::int32_t>, std::shared_ptr<const SCRunningApplication>>;

// The application that a window names; null when it names none.
std::shared_ptr<const SCRunningApplication> applicationOf(const x11::Window& window,
                                                          SCShareableContent& content,
                                                          Applications& known) {
  if (!window.className && window.processId == 0) return nullptr;
  const SCRunningApplication application{window.className.value_or(""), window.processId};
  auto& entry = known[{application.bundleIdentifier, application.processID}];
  if (entry == nullptr) {
    entry = std::make_shared<SCRunningApplication>(application);
    content.applications.push_back(entry);
  }
  return entry;
}

void addWindows(const x11::Connection& connection, bool onScreenOnly, SCShareableContent& content) {
  Applications known;
  for (const auto& window : x11::listManagedWindows(connection)) {
    // An application runs also while all its windows are minimised.
    auto application = applicationOf(window, content, known);
    if (onScreenOnly && !window.isOnScreen) continue;
    content.windows.push_back(std::make_shared<SCWindow>(
        SCWindow{window.id, window.title, pointsOf(window.frame), std::move(application)}));
  }
}

// Whichever display of a Wayland session a person will pick. Its place is not known before.
void addPickedDisplay(SCShareableContent& content) {
  content.displays.push_back(std::make_shared<SCDisplay>(SCDisplay{kPickedDisplay, {}}));
}

// False when the server can't be reached.
bool addContentOfX11(bool onScreenOnly, SCShareableContent& content) {
  const x11::BrokenPipeGuard guard;
  const auto connection = x11::Connection::open();
  if (!connection) return false;
  addWindows(*connection, onScreenOnly, content);
  for (const auto& monitor : x11::listMonitors(*connection)) {
    content.displays.push_back(
        std::make_shared<SCDisplay>(SCDisplay{monitor.id, pointsOf(monitor.frame)}));
  }
  return !connection->isLost();
}

}  // namespace

std::shared_ptr<const SCShareableContent> currentContent(bool onScreenWindowsOnly) {
  auto content = std::make_shared<SCShareableContent>();
  const bool isWayland = session::isWayland();
  if (isWayland) {
    glib::writeLogLineOnce(
        "[vlm] in a Wayland session a display that a person picks and windows of X11 clients can "
        "be captured, and nothing else");
  }
  const bool isShared = isWayland && portal::offersScreen();
  if (isShared) addPickedDisplay(*content);
  const bool isReached = addContentOfX11(onScreenWindowsOnly, *content);
  return isShared || isReached ? content : nullptr;
}

}  // namespace vlm::platform::screen
