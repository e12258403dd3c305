#pragma once

#include <cstdint>
#include <memory>
#include <string>
#include <string_view>

#include "platform/linux/glib/session_bus.h"

namespace vlm::platform::portal {

inline constexpr const char* kScreenCast = "org.freedesktop.portal.ScreenCast";
inline constexpr const char* kRemoteDesktop = "org.freedesktop.portal.RemoteDesktop";

struct UnrefVariant {
  void operator()(GVariant* value) const { g_variant_unref(value); }
};
using Variant = std::unique_ptr<GVariant, UnrefVariant>;

// The options of a call in the making.
class Options {
 public:
  Options() { g_variant_dict_init(&dictionary_, nullptr); }
  ~Options() { g_variant_dict_clear(&dictionary_); }
  Options(const Options&) = delete;
  Options& operator=(const Options&) = delete;

  Options& set(const char* key, GVariant* value) {
    g_variant_dict_insert_value(&dictionary_, key, value);
    return *this;
  }
  Options& set(const char* key, std::uint32_t value) {
    return set(key, g_variant_new_uint32(value));
  }
  Options& set(const char* key, const std::string& value) {
    return set(key, g_variant_new_string(value.c_str()));
  }
  GVariant* take() { return g_variant_dict_end(&dictionary_); }

 private:
  GVariantDict dictionary_;
};

// What a request was answered with: results, or else why there are none.
struct Answer {
  Variant results;
  std::string reason;
  bool isRefused = false;  // by the person
  explicit operator bool() const { return results != nullptr; }
};

enum class Patience { service, person };

// One conversation with the desktop's portal, which takes it for a client of its own: what is
// opened in it ends with it. Every call is answered within seconds or fails. Only for a person's
// choice it waits without limit, and that ends when the portal does. Any thread, one at a time.
class DesktopPortal {
 public:
  // Null when there is no session bus.
  static std::unique_ptr<DesktopPortal> reach();
  ~DesktopPortal();
  DesktopPortal(const DesktopPortal&) = delete;
  DesktopPortal& operator=(const DesktopPortal&) = delete;

  // 0 where the desktop does not have it.
  std::uint32_t property(const char* interface, const char* name) const;
  // A session that requests are made in; its path, empty when it was refused.
  std::string createSession(const char* interface);
  bool hasSession(const std::string& session) const;
  void closeSession(const std::string& session) const;

  // A request that is answered by a signal. `arguments`, a tuple, go before the options.
  Answer request(const char* interface, const char* method, GVariant* arguments, Options& options,
                 Patience patience = Patience::service);
  // False when the call was refused. A descriptor that is answered is the caller's.
  bool call(const char* interface, const char* method, GVariant* arguments,
            int* descriptor = nullptr) const;

  // A call whose answer is not waited for.
  void tell(const char* interface, const char* method, GVariant* arguments) const;

 private:
  explicit DesktopPortal(std::unique_ptr<glib::OwnSessionBus> bus, GCancellable* ending);

  // The call's direct answer; null when it was refused or did not come.
  Variant callOn(const char* path, const char* interface, const char* method, GVariant* arguments,
                 GUnixFDList** descriptors = nullptr) const;

  const glib::Object<GCancellable> ending_;
  const std::unique_ptr<glib::OwnSessionBus> bus_;
  unsigned requests_ = 0;
};

}  // namespace vlm::platform::portal
