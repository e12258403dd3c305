#include "platform/foundation.h"

#include <unistd.h>

#include "platform/linux/glib/log_line.h"
#include "platform/linux/glib/text.h"

namespace vlm::platform {

void NSLog(std::string_view line) noexcept {
  glib::writeLogLine(line);
}

std::optional<NSURL> NSURL::URLWithString(std::string_view text) {
  if (!glib::isUri(text)) return std::nullopt;
  return NSURL{std::string(text)};
}

bool localizedCaseInsensitiveContains(std::string_view text, std::string_view part) {
  return glib::containsIgnoringCase(text, part);
}

bool NSThread::isMainThread() noexcept {
  return gettid() == getpid();
}

bool helpers::areCanonicallyEqual(std::string_view a, std::string_view b) {
  return glib::areSameCharacters(a, b);
}

}  // namespace vlm::platform
