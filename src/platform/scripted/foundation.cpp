#include "platform/foundation.h"

#include <algorithm>
#include <cctype>
#include <string>

#include "platform/scripted/machine/machine.h"

namespace vlm::platform {

void NSLog(std::string_view line) noexcept {
  try {
    scripted::Machine::current().journal.note("NSLog(" + std::string(line) + ")");
  } catch (...) {  // NOLINT(bugprone-empty-catch): no memory for the line: it is lost
  }
}

// The locale of this machine knows ASCII letters.
bool localizedCaseInsensitiveContains(std::string_view text, std::string_view part) {
  const auto same = [](char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) ==
           std::tolower(static_cast<unsigned char>(b));
  };
  return !part.empty() &&
         std::search(text.begin(), text.end(), part.begin(), part.end(), same) != text.end();
}

// It knows one letter with two spellings.
bool helpers::areCanonicallyEqual(std::string_view a, std::string_view b) {
  const auto composed = [](std::string_view text) {
    constexpr std::string_view kDecomposed = "e\xCC\x81";
    std::string result(text);
    for (auto at = result.find(kDecomposed); at != std::string::npos;
         at = result.find(kDecomposed)) {
      result.replace(at, kDecomposed.size(), "\xC3\xA9");
    }
    return result;
  };
  return composed(a) == composed(b);
}

bool NSThread::isMainThread() noexcept {
  return scripted::Machine::current().onMainThread();
}

std::optional<NSURL> NSURL::URLWithString(std::string_view text) {
  const auto fault = scripted::Machine::current().journal.enter("NSURL", {text});
  return fault.nothing ? std::nullopt : std::optional(NSURL{std::string(text)});
}

}  // namespace vlm::platform
