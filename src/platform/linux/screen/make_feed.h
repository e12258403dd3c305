#pragma once

#include <memory>
#include <string>

#include "platform/linux/screen/content_filter.h"
#include "platform/linux/screen/feed.h"

namespace vlm::platform::screen {

// The line to what shows the filter's target, not opened yet; null and why when there is none.
std::unique_ptr<Feed> makeFeed(std::shared_ptr<const ContentFilter> filter, std::string& reason);

}  // namespace vlm::platform::screen
