#include "platform/security.h"

#import <Security/Security.h>

#include "platform/macos/bridge/owned.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

namespace {

static_assert(errSecSuccess == ::errSecSuccess);
static_assert(errSecParam == ::errSecParam);
static_assert(errSecNotAvailable == ::errSecNotAvailable);
static_assert(errSecItemNotFound == ::errSecItemNotFound);
static_assert(errSecInteractionNotAllowed == ::errSecInteractionNotAllowed);

bridge::Keys attributeKeys() {
  static const bridge::Key keys[] = {{kSecClass, ::kSecClass},
                                     {kSecAttrService, ::kSecAttrService},
                                     {kSecAttrAccount, ::kSecAttrAccount},
                                     {kSecAttrAccessible, ::kSecAttrAccessible},
                                     {kSecValueData, ::kSecValueData},
                                     {kSecReturnData, ::kSecReturnData},
                                     {kSecMatchLimit, ::kSecMatchLimit}};
  return keys;
}

// Values that are constants themselves. Only these attributes have such: a service may be called
// like one of them.
bridge::Keys valueKeys(std::string_view attribute) {
  static const bridge::Key classes[] = {{kSecClassGenericPassword, ::kSecClassGenericPassword}};
  static const bridge::Key accesses[] = {
      {kSecAttrAccessibleAfterFirstUnlock, ::kSecAttrAccessibleAfterFirstUnlock}};
  static const bridge::Key limits[] = {{kSecMatchLimitOne, ::kSecMatchLimitOne}};
  if (attribute == kSecClass) return classes;
  if (attribute == kSecAttrAccessible) return accesses;
  if (attribute == kSecMatchLimit) return limits;
  return {};
}

// The attributes for the keychain; null when they are no dictionary or one of them is not known.
bridge::Owned<CFDictionaryRef> toItem(const CFValue& attributes) {
  const auto* const entries = attributes.as<CFDictionary>();
  if (entries == nullptr) return {};
  bridge::Owned<CFMutableDictionaryRef> item(
      ::CFDictionaryCreateMutable(::kCFAllocatorDefault, 0, &::kCFTypeDictionaryKeyCallBacks,
                                  &::kCFTypeDictionaryValueCallBacks));
  for (const auto& [name, value] : *entries) {
    const auto key = bridge::constantFor(attributeKeys(), name);
    const auto* const word = value.as<std::string>();
    const auto constant = word == nullptr ? nullptr : bridge::constantFor(valueKeys(name), *word);
    const auto object = constant == nullptr ? bridge::toCF(value)
                                            : bridge::Owned<CFTypeRef>::retaining(constant);
    if (key == nullptr || !object || !item) return {};
    ::CFDictionarySetValue(item.get(), key, object.get());
  }
  return bridge::Owned<CFDictionaryRef>(item.release());
}

}  // namespace

OSStatus SecItemAdd(const CFValue& attributes) {
  const auto item = toItem(attributes);
  return item ? ::SecItemAdd(item.get(), nullptr) : errSecParam;
}

OSStatus SecItemCopyMatching(const CFValue& query, CFValue& result) {
  const auto item = toItem(query);
  if (!item) return errSecParam;
  bridge::Owned<CFTypeRef> found;
  const auto status = ::SecItemCopyMatching(item.get(), found.out());
  if (status == errSecSuccess) result = bridge::fromCF(found.get());
  return status;
}

OSStatus SecItemDelete(const CFValue& query) {
  const auto item = toItem(query);
  return item ? ::SecItemDelete(item.get()) : errSecParam;
}

}  // namespace vlm::platform
