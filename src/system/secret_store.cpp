#include "system/secret_store.h"

#include <algorithm>
#include <utility>

#include "platform/security.h"
#include "system/secret_bytes.h"

namespace vlm::system {
namespace {

using platform::CFData;
using platform::CFDictionary;
using platform::CFValue;
using platform::errSecSuccess;

CFDictionary secretQuery(const SecretAddress& address) {
  return {{std::string(platform::kSecClass), platform::kSecClassGenericPassword},
          {std::string(platform::kSecAttrService), address.service},
          {std::string(platform::kSecAttrAccount), address.account}};
}

}  // namespace

bool setSecret(const SecretAddress& address, std::span<const std::uint8_t> secret) {
  // The bytes are in the guarded value from the start: a list of entries would copy them.
  SecretValue item(CFValue(secretQuery(address)));
  auto& attributes = *item.value.as<CFDictionary>();
  attributes.emplace(platform::kSecAttrAccessible, platform::kSecAttrAccessibleAfterFirstUnlock);
  attributes.emplace(platform::kSecValueData, CFData(secret.begin(), secret.end()));
  platform::SecItemDelete(secretQuery(address));
  return platform::SecItemAdd(item.value) == errSecSuccess;
}

std::int32_t getSecret(const SecretAddress& address, std::uint8_t* out, std::int32_t capacity) {
  CFDictionary query = secretQuery(address);
  query.emplace(platform::kSecReturnData, true);
  query.emplace(platform::kSecMatchLimit, platform::kSecMatchLimitOne);
  SecretValue found;
  if (platform::SecItemCopyMatching(std::move(query), found.value) != errSecSuccess) return 0;
  const auto* bytes = found.value.as<CFData>();
  if (bytes == nullptr) return 0;
  const auto length = static_cast<std::int32_t>(bytes->size());
  if (length > capacity) return -length;
  if (out != nullptr) std::ranges::copy(*bytes, out);
  return length;
}

bool deleteSecret(const SecretAddress& address) {
  return platform::SecItemDelete(secretQuery(address)) == errSecSuccess;
}

}  // namespace vlm::system
