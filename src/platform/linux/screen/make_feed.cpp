#include "platform/linux/screen/make_feed.h"

#include <utility>

#include "platform/linux/screen/picked_screen.h"
#include "platform/linux/screen/stream_feed.h"
#include "platform/linux/screen/x11_feed.h"

namespace vlm::platform::screen {
namespace {

std::unique_ptr<Feed> makeFeedOf(const PickedTarget& target, std::string& reason) {
  auto opened = target.screen ? target.screen->take() : std::nullopt;
  if (opened) return std::make_unique<StreamFeed>(*std::move(opened));
  reason = target.screen ? "the picked screen is captured already" : target.refusal;
  return nullptr;
}

}  // namespace

std::unique_ptr<Feed> makeFeed(std::shared_ptr<const ContentFilter> filter, std::string& reason) {
  if (const auto* picked = std::get_if<PickedTarget>(&filter->target())) {
    return makeFeedOf(*picked, reason);
  }
  auto connection = x11::Connection::open();
  if (!connection) {
    reason = "the X server can't be reached";
    return nullptr;
  }
  return std::make_unique<X11Feed>(std::move(connection), std::move(filter));
}

}  // namespace vlm::platform::screen
