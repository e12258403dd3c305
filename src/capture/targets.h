#pragma once

#include <cstdint>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "platform/screen_capture_kit.h"

namespace vlm::capture {

using Content = platform::SCShareableContent;

// What can be captured now; null when the platform does not say. Waits for its answer without a
// time limit. An error is logged.
std::shared_ptr<const Content> shareableContent();

// The first window that belongs to an application whose bundle identifier begins with
// `bundlePrefix`, has `titlePart` in its title (any title when not given) and is not too small to
// be worth sharing. 0 when there is none.
std::uint32_t findWindow(const Content& content, std::string_view bundlePrefix,
                         const std::optional<std::string>& titlePart);

// The filters of the three kinds of capture; null when the content has no such target.
std::shared_ptr<const platform::SCContentFilter> windowFilter(const Content& content,
                                                              std::uint32_t windowId);
std::shared_ptr<const platform::SCContentFilter> applicationFilter(const Content& content,
                                                                   std::string_view bundlePrefix);
std::shared_ptr<const platform::SCContentFilter> displayFilter(const Content& content,
                                                               std::uint32_t displayId);

}  // namespace vlm::capture
