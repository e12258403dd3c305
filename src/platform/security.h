#pragma once

#include <string_view>

#include "platform/cf_value.h"
#include "platform/foundation.h"

namespace vlm::platform {

inline constexpr OSStatus errSecSuccess = 0;
inline constexpr OSStatus errSecParam = -50;
inline constexpr OSStatus errSecNotAvailable = -25291;
inline constexpr OSStatus errSecItemNotFound = -25300;
inline constexpr OSStatus errSecInteractionNotAllowed = -25308;

// Keys and values of item attributes and of queries for items.
inline constexpr std::string_view kSecClass = "class";
inline constexpr std::string_view kSecClassGenericPassword = "genp";
inline constexpr std::string_view kSecAttrService = "svce";
inline constexpr std::string_view kSecAttrAccount = "acct";
inline constexpr std::string_view kSecAttrAccessible = "pdmn";
inline constexpr std::string_view kSecAttrAccessibleAfterFirstUnlock = "ck";
inline constexpr std::string_view kSecValueData = "v_Data";
inline constexpr std::string_view kSecReturnData = "r_Data";
inline constexpr std::string_view kSecMatchLimit = "m_Limit";
inline constexpr std::string_view kSecMatchLimitOne = "m_LimitOne";

// Generic-password items of the default keychain, each with a service, an account and any bytes.
// All three take a dictionary and may be called on any thread. The platform asks the keychain not
// to ask a person for anything (where it can be asked, with kSecUseAuthenticationUI); a system
// whose keychain asks all the same can't be prevented from it. A keychain that is missing, locked
// or can't be reached is a failure. Only bytes that the caller passed or asked for leave copies of
// a secret in ordinary memory.

// Stores a new item.
OSStatus SecItemAdd(const CFValue& attributes);
// The bytes of the first item that has the query's attributes. `result` is written on success.
OSStatus SecItemCopyMatching(const CFValue& query, CFValue& result);
// Deletes every item that has the query's attributes; errSecItemNotFound when there is none.
OSStatus SecItemDelete(const CFValue& query);

}  // namespace vlm::platform
