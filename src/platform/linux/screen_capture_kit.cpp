#include "platform/screen_capture_kit.h"

#include <utility>

#include "platform/linux/screen/content_filter.h"
#include "platform/linux/screen/picked_screen.h"
#include "platform/linux/screen/shareable_content.h"
#include "platform/linux/screen/stream.h"
#include "platform/linux/session/session_type.h"

namespace vlm::platform {
namespace {

std::vector<std::uint32_t> idsOf(const std::vector<std::shared_ptr<const SCWindow>>& windows) {
  std::vector<std::uint32_t> ids;
  ids.reserve(windows.size());
  for (const auto& window : windows) ids.push_back(window->windowID);
  return ids;
}

}  // namespace

using screen::ContentFilter;

// Desktop windows are windows like others here: no caller asks for them to be left out.
void SCShareableContent::getShareableContentExcludingDesktopWindows(bool, bool onScreenWindowsOnly,
                                                                    Handler handler) {
  if (auto content = screen::currentContent(onScreenWindowsOnly)) {
    handler(std::move(content), std::nullopt);
  } else {
    handler(nullptr, NSError{session::isWayland() ? "the desktop shares nothing"
                                                  : "the X server can't be reached"});
  }
}

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDesktopIndependentWindow(
    std::shared_ptr<const SCWindow> window) {
  return std::make_shared<ContentFilter>(screen::WindowTarget{window->windowID}, window->frame);
}

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDisplayIncludingApplications(
    std::shared_ptr<const SCDisplay> display,
    std::vector<std::shared_ptr<const SCRunningApplication>> applications,
    std::vector<std::shared_ptr<const SCWindow>> excepting) {
  const CGRect rect = display->frame;
  return std::make_shared<ContentFilter>(
      screen::ApplicationsTarget{std::move(display), std::move(applications), idsOf(excepting)},
      rect);
}

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDisplayExcludingWindows(
    std::shared_ptr<const SCDisplay> display,
    std::vector<std::shared_ptr<const SCWindow>> excluding) {
  if (display->displayID == screen::kPickedDisplay) return screen::pickScreen();
  const CGRect rect = display->frame;
  return std::make_shared<ContentFilter>(
      screen::DisplayTarget{std::move(display), idsOf(excluding)}, rect);
}

std::shared_ptr<SCStream> SCStream::initWithFilter(std::shared_ptr<const SCContentFilter> filter,
                                                   const SCStreamConfiguration& configuration,
                                                   std::weak_ptr<SCStreamDelegate> delegate) {
  // This platform makes every filter itself.
  return screen::makeStream(std::static_pointer_cast<const ContentFilter>(filter), configuration,
                            std::move(delegate));
}

}  // namespace vlm::platform
