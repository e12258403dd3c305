#include "capture/targets.h"

#include <algorithm>
#include <utility>

#include "frame/await.h"
#include "frame/log.h"

namespace vlm::capture {
namespace {

using platform::SCContentFilter;
using platform::SCDisplay;
using platform::SCRunningApplication;
using platform::SCWindow;

// In points, each way. Smaller windows are tool tips, menus and the like.
constexpr double kSmallestFindableWindow = 100;

bool belongsTo(const SCWindow& window, std::string_view bundlePrefix) {
  return window.owningApplication != nullptr &&
         window.owningApplication->bundleIdentifier.starts_with(bundlePrefix);
}

bool titleContains(const SCWindow& window, const std::optional<std::string>& part) {
  return !part || platform::localizedCaseInsensitiveContains(window.title.value_or(""), *part);
}

bool isLargeEnough(const SCWindow& window) {
  return window.frame.size.width >= kSmallestFindableWindow &&
         window.frame.size.height >= kSmallestFindableWindow;
}

double area(const SCWindow& window) {
  return window.frame.size.width * window.frame.size.height;
}

// The first element for which `test` holds; null when there is none.
template <class Elements, class Test>
auto firstWhere(const Elements& elements, Test test) -> typename Elements::value_type {
  const auto found = std::ranges::find_if(elements, [&](const auto& e) { return test(*e); });
  return found == elements.end() ? nullptr : *found;
}

// The application's largest window; of equally large ones the first.
std::shared_ptr<const SCWindow> mainWindow(const Content& content, std::string_view bundlePrefix) {
  std::shared_ptr<const SCWindow> largest;
  for (const auto& window : content.windows) {
    if (!belongsTo(*window, bundlePrefix)) continue;
    if (largest == nullptr || area(*window) > area(*largest)) largest = window;
  }
  return largest;
}

// The first display for which `test` holds, else the first display; null when there are none.
template <class Test>
std::shared_ptr<const SCDisplay> displayWhere(const Content& content, Test test) {
  if (content.displays.empty()) return nullptr;
  auto found = firstWhere(content.displays, test);
  return found ? found : content.displays.front();
}

}  // namespace

std::shared_ptr<const Content> shareableContent() {
  return frame::await<std::shared_ptr<const Content>>([](auto deliver) {
    Content::getShareableContentExcludingDesktopWindows(
        false, true,
        [deliver](std::shared_ptr<const Content> content, std::optional<platform::NSError> error) {
          if (error) frame::log("SCShareableContent failed: ", error->localizedDescription);
          deliver(std::move(content));
        });
  });
}

std::uint32_t findWindow(const Content& content, std::string_view bundlePrefix,
                         const std::optional<std::string>& titlePart) {
  const auto found = firstWhere(content.windows, [&](const SCWindow& window) {
    return belongsTo(window, bundlePrefix) && titleContains(window, titlePart) &&
           isLargeEnough(window);
  });
  return found ? found->windowID : 0;
}

std::shared_ptr<const SCContentFilter> windowFilter(const Content& content,
                                                    std::uint32_t windowId) {
  auto window =
      firstWhere(content.windows, [&](const SCWindow& each) { return each.windowID == windowId; });
  if (!window) return nullptr;
  return SCContentFilter::initWithDesktopIndependentWindow(std::move(window));
}

std::shared_ptr<const SCContentFilter> applicationFilter(const Content& content,
                                                         std::string_view bundlePrefix) {
  if (bundlePrefix.empty()) return nullptr;
  auto application = firstWhere(content.applications, [&](const SCRunningApplication& each) {
    return each.bundleIdentifier.starts_with(bundlePrefix);
  });
  if (!application) return nullptr;
  const auto window = mainWindow(content, bundlePrefix);
  auto display = displayWhere(content, [&](const SCDisplay& each) {
    return window == nullptr || platform::CGRectIntersectsRect(each.frame, window->frame);
  });
  if (!display) return nullptr;
  return SCContentFilter::initWithDisplayIncludingApplications(std::move(display),
                                                               {std::move(application)}, {});
}

std::shared_ptr<const SCContentFilter> displayFilter(const Content& content,
                                                     std::uint32_t displayId) {
  auto display = displayWhere(content, [&](const SCDisplay& each) {
    return displayId == 0 || each.displayID == displayId;
  });
  if (!display) return nullptr;
  return SCContentFilter::initWithDisplayExcludingWindows(std::move(display), {});
}

}  // namespace vlm::capture
