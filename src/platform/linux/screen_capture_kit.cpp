// Not served yet: every request answers with an error.
#include "platform/screen_capture_kit.h"

namespace vlm::platform {

void SCShareableContent::getShareableContentExcludingDesktopWindows(bool, bool, Handler handler) {
  handler(nullptr, NSError{"screen capture is not served yet"});
}

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDesktopIndependentWindow(
    std::shared_ptr<const SCWindow>) {
  return nullptr;
}

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDisplayIncludingApplications(
    std::shared_ptr<const SCDisplay>, std::vector<std::shared_ptr<const SCRunningApplication>>,
    std::vector<std::shared_ptr<const SCWindow>>) {
  return nullptr;
}

std::shared_ptr<const SCContentFilter> SCContentFilter::initWithDisplayExcludingWindows(
    std::shared_ptr<const SCDisplay>, std::vector<std::shared_ptr<const SCWindow>>) {
  return nullptr;
}

std::shared_ptr<SCStream> SCStream::initWithFilter(std::shared_ptr<const SCContentFilter>,
                                                   const SCStreamConfiguration&,
                                                   std::weak_ptr<SCStreamDelegate>) {
  return nullptr;
}

}  // namespace vlm::platform
