#pragma once

#import <CoreFoundation/CoreFoundation.h>
#import <Foundation/Foundation.h>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "platform/cf_value.h"
#include "platform/foundation.h"
#include "platform/macos/bridge/owned.h"

namespace vlm::platform::bridge {

// A name of the platform headers and the framework's constant that it means. What the frameworks'
// constants spell is not published, so nothing is ever passed by its spelling.
struct Key {
  std::string_view name;
  CFStringRef constant;
};
using Keys = std::span<const Key>;

// The constant for `name`, null when the table has none.
CFStringRef constantFor(Keys keys, std::string_view name);

// UTF-8 as a string; null when it is none.
Owned<CFStringRef> toString(std::string_view text);
// A string as UTF-8, empty for none. Halves of characters become question marks.
std::string text(CFStringRef string);
inline std::string text(NSString* string) {
  return text((CFStringRef)string);
}
std::optional<std::string> optionalText(NSString* string);

// A value as an object with one reference, null for a null value and for text that is not UTF-8
// anywhere in it. Null inside an array or a dictionary becomes kCFNull. Names of dictionaries that
// `keys` has are replaced by their constants, on the first level.
Owned<CFTypeRef> toCF(const CFValue& value, Keys keys = {});
// A dictionary; null for any other value.
Owned<CFDictionaryRef> toDictionary(const CFValue& value, Keys keys);

// An object as a value: null for null, for kCFNull, and for kinds that no value can express.
CFValue fromCF(CFTypeRef object);

// An error as the headers have it; nothing for nil.
std::optional<NSError> fromError(::NSError* error);

}  // namespace vlm::platform::bridge
