#include "platform/foundation.h"

#include <unistd.h>

#include "platform/linux/glib/text.h"

namespace vlm::platform {

void NSLog(std::string_view line) noexcept {
  // One write, so that lines of different threads and processes never mix. A log that can't be
  // written to is no reason to fail.
  try {
    std::string text(line);
    text += '\n';
    [[maybe_unused]] const auto written = write(STDERR_FILENO, text.data(), text.size());
  } catch (...) {  // NOLINT(bugprone-empty-catch): no memory for the line: it is lost
  }
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
