#include "platform/security.h"

#include <memory>
#include <optional>

#include "platform/linux/secrets/conversation.h"

// Here nothing ever asks a person, and a keychain that is silent is a failure within a second.
namespace vlm::platform {
namespace {

using secrets::Conversation;

struct UnrefSecret {
  void operator()(SecretValue* secret) const { secret_value_unref(secret); }
};
using OwnedSecret = std::unique_ptr<SecretValue, UnrefSecret>;

struct Address {
  std::string service;
  std::string account;
};

bool isUtf8(const std::string& text) {
  return g_utf8_validate(text.data(), static_cast<gssize>(text.size()), nullptr) != FALSE;
}

std::optional<Address> addressOf(const CFValue& query) {
  const auto text = [&](std::string_view key) {
    const auto* value = query.find(key);
    return value ? value->as<std::string>() : nullptr;
  };
  const auto* service = text(kSecAttrService);
  const auto* account = text(kSecAttrAccount);
  if (service == nullptr || account == nullptr) return std::nullopt;
  // libsecret takes nothing else.
  if (!isUtf8(*service) || !isUtf8(*account)) return std::nullopt;
  return Address{*service, *account};
}

// Where libsecret keeps them, the bytes are in memory that is never swapped out.
CFData bytesOf(SecretValue* secret) {
  gsize size = 0;
  const auto* data = reinterpret_cast<const std::uint8_t*>(secret_value_get(secret, &size));
  return CFData(data, data + size);
}

}  // namespace

OSStatus SecItemAdd(const CFValue& attributes) {
  const auto address = addressOf(attributes);
  const auto* value = attributes.find(kSecValueData);
  const auto* data = value ? value->as<CFData>() : nullptr;
  if (!address || data == nullptr) return errSecParam;
  const OwnedSecret secret(secret_value_new(reinterpret_cast<const gchar*>(data->data()),
                                            static_cast<gssize>(data->size()),
                                            "application/octet-stream"));
  return Conversation().create(address->service, address->account, secret.get());
}

OSStatus SecItemCopyMatching(const CFValue& query, CFValue& result) {
  const auto address = addressOf(query);
  if (!address) return errSecParam;
  Conversation conversation;
  const auto items = conversation.find(address->service, address->account, true);
  if (conversation.status() != errSecSuccess) return conversation.status();
  if (!items) return errSecItemNotFound;
  const OwnedSecret secret(secret_item_get_secret(SECRET_ITEM(items->data)));
  if (!secret) return errSecNotAvailable;
  result = bytesOf(secret.get());
  return errSecSuccess;
}

OSStatus SecItemDelete(const CFValue& query) {
  const auto address = addressOf(query);
  if (!address) return errSecParam;
  Conversation conversation;
  const auto items = conversation.find(address->service, address->account, false);
  if (conversation.status() != errSecSuccess) return conversation.status();
  if (!items) return errSecItemNotFound;
  for (GList* each = items.get(); each != nullptr; each = each->next) {
    conversation.remove(SECRET_ITEM(each->data));
  }
  return conversation.status();
}

}  // namespace vlm::platform
