#pragma once

#include <gio/gio.h>

#include <chrono>
#include <cstring>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <thread>

#include "wayland/private_session.h"

namespace vlm::test {

// Someone at the keyboard of the desktop: presses keys through the compositor's own interface.
class Person {
 public:
  static constexpr guint32 kTab = 15, kEnter = 28, kSpace = 57, kShift = 42;
  // What they press in a dialog: the keys to its button, with what it asks switched on.
  static constexpr std::initializer_list<guint32> kShareScreen{kTab, kTab, kTab, kEnter},
      kShareInput{kTab, kTab, kSpace, kTab, kTab, kEnter}, kCancel{kTab, kTab, kEnter};

  Person() {
    bus_.reset(g_dbus_connection_new_for_address_sync(
        g_getenv("DBUS_SESSION_BUS_ADDRESS"),
        static_cast<GDBusConnectionFlags>(G_DBUS_CONNECTION_FLAGS_AUTHENTICATION_CLIENT |
                                          G_DBUS_CONNECTION_FLAGS_MESSAGE_BUS_CONNECTION),
        nullptr, nullptr, nullptr));
    auto* const made = call("/org/gnome/Mutter/RemoteDesktop", "", "CreateSession", nullptr);
    const char* path = "";
    g_variant_get(made, "(&o)", &path);
    session_ = path;
    g_variant_unref(made);
    g_variant_unref(call(session_, ".Session", "Start", nullptr));
    press(kShift);  // there is no keyboard before its first key
  }

  // Waits for a dialog to take the keyboard from the client, answers it, and waits for it to close.
  void answer(const NativeClient& client, std::initializer_list<guint32> keys) {
    const auto isLast = [&](const char* what) {
      const auto seen = client.input();
      const auto at = seen.rfind("focus");
      return at != std::string::npos && seen.compare(at, std::strlen(what), what) == 0;
    };
    if (!eventually([&] { return isLast("focus out"); })) throw std::runtime_error("no dialog");
    std::this_thread::sleep_for(std::chrono::milliseconds(500));  // it opens slowly
    for (const auto key : keys) press(key);
    if (!eventually([&] { return isLast("focus in"); })) throw std::runtime_error("still a dialog");
  }

 private:
  struct Unref {
    void operator()(GDBusConnection* bus) const { g_object_unref(bus); }
  };

  void press(guint32 key) {
    for (const gboolean down : {1, 0}) {
      g_variant_unref(
          call(session_, ".Session", "NotifyKeyboardKeycode", g_variant_new("(ub)", key, down)));
      std::this_thread::sleep_for(std::chrono::milliseconds(60));
    }
  }

  GVariant* call(const std::string& path, const char* interface, const char* method,
                 GVariant* arguments) {
    const std::string name = "org.gnome.Mutter.RemoteDesktop";
    auto* const answer = g_dbus_connection_call_sync(
        bus_.get(), name.c_str(), path.c_str(), (name + interface).c_str(), method, arguments,
        nullptr, G_DBUS_CALL_FLAGS_NONE, 5000, nullptr, nullptr);
    if (answer == nullptr) throw std::runtime_error(std::string("no answer to ") + method);
    return answer;
  }

  std::unique_ptr<GDBusConnection, Unref> bus_;
  std::string session_;
};

}  // namespace vlm::test
