#include "platform/linux/desktop/settings_pages.h"

#include <gio/gdesktopappinfo.h>
#include <gio/gio.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <string>
#include <string_view>

#include "platform/app_kit.h"
#include "platform/linux/glib/deadline.h"
#include "platform/linux/glib/session_bus.h"

namespace vlm::platform::desktop {
namespace {

// The desktops' own settings pages, the most telling first. None has a page for recording the
// screen: there every X client may.
struct SettingsPages {
  std::string_view anchor;
  std::array<const char*, 4> desktopIds;
};
constexpr std::array kSettingsPages{
    SettingsPages{"Privacy_Microphone",
                  {"gnome-microphone-panel.desktop", "gnome-sound-panel.desktop",
                   "kcm_pulseaudio.desktop", "org.gnome.Settings.desktop"}},
    SettingsPages{"Privacy_Accessibility",
                  {"gnome-universal-access-panel.desktop", "kcm_access.desktop",
                   "xfce4-accessibility-settings.desktop", "org.gnome.Settings.desktop"}},
    SettingsPages{"",
                  {"gnome-privacy-panel.desktop", "org.gnome.Settings.desktop",
                   "systemsettings.desktop", "xfce-settings-manager.desktop"}},
};

// GLib asks the session bus whatever it launches, and would wait for ever for one that is there but
// does not answer. One that is not there is no obstacle.
class LaunchingBus {
 public:
  LaunchingBus() : bus_(glib::safeSessionBus(deadline_.cancellable(), error_.out())) {}
  bool answers() const {
    return bus_ || g_cancellable_is_cancelled(deadline_.cancellable()) == FALSE;
  }

 private:
  glib::Deadline deadline_{std::chrono::seconds(1)};
  glib::Error error_;
  const glib::Object<GDBusConnection> bus_;
};

bool launch(const char* desktopId) {
  const glib::Object<GDesktopAppInfo> app(g_desktop_app_info_new(desktopId));
  return app && g_app_info_launch(G_APP_INFO(app.get()), nullptr, nullptr, nullptr) != FALSE;
}

bool openSettings(std::string_view anchor) {
  for (const auto& pages : kSettingsPages) {
    if (!pages.anchor.empty() && pages.anchor != anchor) continue;
    for (const char* desktopId : pages.desktopIds) {
      if (launch(desktopId)) return true;
    }
  }
  return false;
}

}  // namespace

bool open(const NSURL& url) {
  const LaunchingBus bus;
  if (!bus.answers()) return false;
  const std::string_view text = url.absoluteString;
  if (text.starts_with(kPrivacySettingsURL)) {
    const auto query = text.find('?');
    return openSettings(query == std::string_view::npos ? "" : text.substr(query + 1));
  }
  return g_app_info_launch_default_for_uri(url.absoluteString.c_str(), nullptr, nullptr) != FALSE;
}

}  // namespace vlm::platform::desktop
