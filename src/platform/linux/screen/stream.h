#pragma once

#include <memory>

#include "platform/linux/screen/content_filter.h"
#include "platform/screen_capture_kit.h"

namespace vlm::platform::screen {

// A stream of what the filter describes, not started yet.
std::shared_ptr<SCStream> makeStream(std::shared_ptr<const ContentFilter> filter,
                                     const SCStreamConfiguration& configuration,
                                     std::weak_ptr<SCStreamDelegate> delegate);

}  // namespace vlm::platform::screen
