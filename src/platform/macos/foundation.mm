#include "platform/foundation.h"

#import <Foundation/Foundation.h>

#include "platform/macos/bridge/guard.h"
#include "platform/macos/bridge/owned.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

std::optional<NSURL> NSURL::URLWithString(std::string_view text) {
  std::optional<NSURL> result;
  bridge::guarded([&] {
    const auto string = bridge::toString(text);
    ::NSURL* const url = string ? [::NSURL URLWithString:(NSString*)string.get()] : nil;
    if (url != nil) result = NSURL{bridge::text(url.absoluteString)};
  });
  return result;
}

void NSLog(std::string_view line) noexcept {
  try {
    bridge::guarded([&] {
      const auto string = bridge::toString(line);
      if (string) ::NSLog(@"%@", (NSString*)string.get());
    });
  } catch (...) {
    // No memory for the line: it is lost, and nothing else.
  }
}

bool localizedCaseInsensitiveContains(std::string_view text, std::string_view part) {
  bool contains = false;
  bridge::guarded([&] {
    const auto whole = bridge::toString(text);
    const auto wanted = bridge::toString(part);
    if (!whole || !wanted || part.empty()) return;
    contains = [(NSString*)whole.get()
        localizedCaseInsensitiveContainsString:(NSString*)wanted.get()];
  });
  return contains;
}

bool NSThread::isMainThread() noexcept {
  return [::NSThread isMainThread];
}

namespace helpers {

bool areCanonicallyEqual(std::string_view a, std::string_view b) {
  bool equal = false;
  bridge::guarded([&] {
    const auto first = bridge::toString(a);
    const auto second = bridge::toString(b);
    if (!first || !second) return;
    NSString* const composed = ((NSString*)first.get()).precomposedStringWithCanonicalMapping;
    equal = [composed isEqualToString:((NSString*)second.get()).precomposedStringWithCanonicalMapping];
  });
  return equal;
}

}  // namespace helpers

}  // namespace vlm::platform
