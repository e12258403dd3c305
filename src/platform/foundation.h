#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace vlm::platform {

// Statuses of media and session operations; 0 is success.
using OSStatus = std::int32_t;
inline constexpr OSStatus noErr = 0;

// The reason for which an asynchronous request failed, in words for a person.
struct NSError {
  std::string localizedDescription;
};

struct NSURL {
  std::string absoluteString;
  // Nothing when the text does not form a URL.
  static std::optional<NSURL> URLWithString(std::string_view text);
};

// Writes `line` as one line to the system's log, as it stands: nothing in it is taken as a format.
// Lines of different threads never mix. Any thread; never throws.
void NSLog(std::string_view line) noexcept;

// True when `text` contains `part` under the user's locale with differences of case ignored. The
// empty part is contained in nothing. Both are UTF-8. Any thread.
bool localizedCaseInsensitiveContains(std::string_view text, std::string_view part);

struct NSThread {
  // True on the process's main thread.
  static bool isMainThread() noexcept;
};

// Ours, on top of the operations that their comments name.
namespace helpers {

// NSString's compare: with the same result as NSOrderedSame: the two are the same characters,
// however they are composed. Any thread.
bool areCanonicallyEqual(std::string_view a, std::string_view b);

}  // namespace helpers

}  // namespace vlm::platform
