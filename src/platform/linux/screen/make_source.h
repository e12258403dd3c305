#pragma once

#include <memory>
#include <string>

#include "platform/linux/screen/content_filter.h"
#include "platform/linux/screen/x11_source.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::screen {

// The source that shows what the filter describes. Null, with the reason, when the server can't
// serve it.
std::unique_ptr<X11Source> makeSource(const x11::Connection& connection,
                                      const ContentFilter& filter, std::string& reason);

}  // namespace vlm::platform::screen
