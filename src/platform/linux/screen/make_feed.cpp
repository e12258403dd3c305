#include "platform/linux/screen/make_feed.h"

#include <utility>

#include "platform/linux/screen/x11_feed.h"

namespace vlm::platform::screen {

std::unique_ptr<Feed> makeFeed(std::shared_ptr<const ContentFilter> filter, std::string& reason) {
  auto connection = x11::Connection::open();
  if (!connection) {
    reason = "the X server can't be reached";
    return nullptr;
  }
  return std::make_unique<X11Feed>(std::move(connection), std::move(filter));
}

}  // namespace vlm::platform::screen
