#include "platform/linux/content_filter.h"

#include <utility>

namespace vlm::platform {
namespace {

std::vector<std::uint32_t> idsOf(const std::vector<std::shared_ptr<const SCWindow>>& windows) {
  std::vector<std::uint32_t> ids;
  ids.reserve(windows.size());
  for (const auto& window : windows) ids.push_back(window->windowID);
  return ids;
}

}  // namespace

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDesktopIndependentWindow(
    std::shared_ptr<const SCWindow> window) {
  return std::make_shared<ContentFilter>(WindowTarget{window->windowID}, window->frame);
}

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDisplayIncludingApplications(
    std::shared_ptr<const SCDisplay> display,
    std::vector<std::shared_ptr<const SCRunningApplication>> applications,
    std::vector<std::shared_ptr<const SCWindow>> excepting) {
  const CGRect rect = display->frame;
  return std::make_shared<ContentFilter>(
      ApplicationsTarget{std::move(display), std::move(applications), idsOf(excepting)}, rect);
}

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDisplayExcludingWindows(
    std::shared_ptr<const SCDisplay> display,
    std::vector<std::shared_ptr<const SCWindow>> excluding) {
  const CGRect rect = display->frame;
  return std::make_shared<ContentFilter>(DisplayTarget{std::move(display), idsOf(excluding)}, rect);
}

}  // namespace vlm::platform
