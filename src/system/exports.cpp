#include <cstring>
#include <span>

#include "VelmoraMacNative.h"
#include "frame/guard.h"
#include "frame/text.h"
#include "system/machine_identity.h"
#include "system/permissions.h"
#include "system/secret_store.h"

using vlm::frame::guarded;
using vlm::frame::textIn;

namespace {

// Nothing when either name is missing.
std::optional<vlm::system::SecretAddress> address(const char* service, const char* account) {
  if (service == nullptr || account == nullptr) return std::nullopt;
  return vlm::system::SecretAddress{*textIn(service), *textIn(account)};
}

}  // namespace

bool vlm_secret_set(const char* service, const char* account, const uint8_t* data, int32_t size) {
  return guarded(false, [&] {
    const auto at = address(service, account);
    if (!at || data == nullptr || size < 0) return false;
    return vlm::system::setSecret(*at, {data, static_cast<std::size_t>(size)});
  });
}

int32_t vlm_secret_get(const char* service, const char* account, uint8_t* out, int32_t capacity) {
  return guarded<int32_t>(0, [&] {
    const auto at = address(service, account);
    return at ? vlm::system::getSecret(*at, out, capacity) : 0;
  });
}

bool vlm_secret_delete(const char* service, const char* account) {
  return guarded(false, [&] {
    const auto at = address(service, account);
    return at && vlm::system::deleteSecret(*at);
  });
}

int32_t vlm_machine_id(char* out, int32_t capacity) {
  return guarded<int32_t>(0, [&]() -> int32_t {
    const auto id = vlm::system::machineId();
    if (!id || out == nullptr || static_cast<int64_t>(id->size()) >= capacity) return 0;
    std::memcpy(out, id->c_str(), id->size() + 1);
    return static_cast<int32_t>(id->size());
  });
}

bool vlm_perm_screen_recording(bool request) {
  return guarded(false, [&] { return vlm::system::screenRecordingGranted(request); });
}

bool vlm_perm_accessibility(bool prompt) {
  return guarded(false, [&] { return vlm::system::accessibilityGranted(prompt); });
}

bool vlm_perm_open_settings(const char* kind) {
  return guarded(false, [&] { return vlm::system::openPrivacySettings(textIn(kind)); });
}
