#include "platform/linux/x11/access.h"

#include <algorithm>
#include <initializer_list>
#include <string_view>

#include "platform/linux/session/session_type.h"
#include "platform/linux/x11/broken_pipe.h"
#include "platform/linux/x11/extensions.h"
#include "platform/linux/x11/monitors.h"
#include "platform/linux/x11/reply.h"

namespace vlm::platform::x11 {
namespace {

bool displaySupports(std::initializer_list<Extension> extensions) {
  const BrokenPipeGuard guard;
  const auto connection = Connection::open();
  return connection && !isOfWayland(*connection) &&
         std::ranges::all_of(extensions,
                             [&](Extension extension) { return supports(*connection, extension); });
}

}  // namespace

// Newer servers have an extension of this name; older ones name their monitors so.
bool isOfWayland(const Connection& connection) {
  constexpr std::string_view kName = "XWAYLAND";
  if (session::isWayland()) return true;
  auto* c = connection.get();
  const auto asked = xcb_query_extension(c, kName.size(), kName.data());
  const Reply<xcb_query_extension_reply_t> extension(xcb_query_extension_reply(c, asked, nullptr));
  if (extension && extension->present != 0) return true;
  const auto names = namesOfOutputs(connection);
  return std::ranges::any_of(names, [&](const auto& name) { return name.starts_with(kName); });
}

bool mayCaptureScreen() {
  return displaySupports(
      {Extension::damage, Extension::composite, Extension::randr, Extension::fixes});
}

bool mayPostInput() {
  return displaySupports({Extension::test});
}

}  // namespace vlm::platform::x11
