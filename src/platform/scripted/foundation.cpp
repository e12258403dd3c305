#include "platform/foundation.h"

#include <algorithm>
#include <cctype>

#include "platform/scripted/machine.h"

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

}  // namespace vlm::platform
