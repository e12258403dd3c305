#include "platform/linux/portal/screen_cast.h"

#include <utility>

#include "platform/linux/portal/consent.h"
#include "platform/linux/portal/sources.h"

namespace vlm::platform::portal {
namespace {

std::string newToken(GVariant* results) {
  const char* token = "";
  g_variant_lookup(results, "restore_token", "&s", &token);
  return token;
}

}  // namespace

std::vector<Monitor> monitorsOf(GVariant* results) {
  std::vector<Monitor> monitors;
  GVariantIter* streams = nullptr;
  if (g_variant_lookup(results, "streams", "a(ua{sv})", &streams) == FALSE) return monitors;
  guint32 node = 0;
  GVariant* properties = nullptr;
  while (g_variant_iter_loop(streams, "(u@a{sv})", &node, &properties) != FALSE) {
    Monitor monitor{node, {}};
    auto& frame = monitor.frame;
    g_variant_lookup(properties, "position", "(ii)", &frame.x, &frame.y);
    g_variant_lookup(properties, "size", "(ii)", &frame.width, &frame.height);
    monitors.push_back(monitor);
  }
  g_variant_iter_free(streams);
  return monitors;
}

std::unique_ptr<ScreenCast> ScreenCast::open(std::string& reason) {
  static constinit Mutex oneAtATime;
  const MutexLock lock(oneAtATime);
  auto portal = DesktopPortal::reach();
  if (!portal) {
    reason = "the session bus can't be reached";
    return nullptr;
  }
  std::unique_ptr<ScreenCast> cast(new ScreenCast(std::move(portal)));
  return cast->start(reason) ? std::move(cast) : nullptr;
}

ScreenCast::~ScreenCast() {
  if (!session_.empty()) portal_->closeSession(session_);
}

bool ScreenCast::start(std::string& reason) {
  if (!offersMonitors(*portal_)) {
    reason = "the desktop has no portal that shares its screen";
    return false;
  }
  session_ = portal_->createSession(kScreenCast);
  if (session_.empty()) {
    reason = "the desktop's portal opens no session";
    return false;
  }
  Options sources;
  selectMonitors(sources, false);
  constexpr std::uint32_t kFirstWithTokens = 4;
  if (portal_->property(kScreenCast, "version") >= kFirstWithTokens) {
    remember(sources, Consent::shared().token());
  }
  const auto selected = portal_->request(kScreenCast, "SelectSources",
                                         g_variant_new("(o)", session_.c_str()), sources);
  reason = selected.reason;
  if (!selected) return false;
  Options none;
  const auto started = portal_->request(
      kScreenCast, "Start", g_variant_new("(os)", session_.c_str(), ""), none, Patience::person);
  reason = started.reason;
  if (started.isRefused) Consent::shared().replace("");
  if (!started) return false;
  Consent::shared().replace(newToken(started.results.get()));
  const auto monitors = monitorsOf(started.results.get());
  if (monitors.empty()) {
    reason = "the desktop shares nothing";
    return false;
  }
  monitor_ = monitors.front();
  return true;
}

int ScreenCast::openRemote() const {
  int descriptor = -1;
  Options none;
  portal_->call(kScreenCast, "OpenPipeWireRemote",
                g_variant_new("(o@a{sv})", session_.c_str(), none.take()), &descriptor);
  return descriptor;
}

}  // namespace vlm::platform::portal
