// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif
int32_t SecItemAdd(CFDictionaryRef attributes, CFTypeRef  _Nullable * result) __attribute__((availability(macos,introduced=10.6)));
int32_t SecItemCopyMatching(CFDictionaryRef query, CFTypeRef  _Nullable * result) __attribute__((availability(macos,introduced=10.6)));
int32_t SecItemDelete(CFDictionaryRef query) __attribute__((availability(macos,introduced=10.6)));
extern const CFStringRef kSecClass __attribute__((availability(macos,introduced=10.6)));
extern const CFStringRef kSecClassGenericPassword __attribute__((availability(macos,introduced=10.7)));
extern const CFStringRef kSecAttrService __attribute__((availability(macos,introduced=10.6)));
extern const CFStringRef kSecAttrAccount __attribute__((availability(macos,introduced=10.6)));
extern const CFStringRef kSecAttrAccessible __attribute__((availability(macos,introduced=10.9)));
extern const CFStringRef kSecAttrAccessibleAfterFirstUnlock __attribute__((availability(macos,introduced=10.9)));
extern const CFStringRef kSecValueData __attribute__((availability(macos,introduced=10.6)));
extern const CFStringRef kSecReturnData __attribute__((availability(macos,introduced=10.6)));
extern const CFStringRef kSecMatchLimit __attribute__((availability(macos,introduced=10.6)));
extern const CFStringRef kSecMatchLimitOne __attribute__((availability(macos,introduced=10.6)));
enum { errSecSuccess = 0 };
enum { errSecParam = -50 };
enum { errSecNotAvailable = -25291 };
enum { errSecItemNotFound = -25300 };
enum { errSecInteractionNotAllowed = -25308 };
#ifdef __cplusplus
}
#endif
