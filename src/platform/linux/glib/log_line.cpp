#include "platform/linux/glib/log_line.h"

#include <glib.h>
#include <unistd.h>

#include <functional>
#include <set>
#include <string>

#include "platform/mutex.h"

namespace vlm::platform::glib {
namespace {

using Hook = void (*)(const char* line);

// A handler of GLib's log domains would not do: GLib can't be asked whether a domain has one, and a
// handler that the library sets would come in front of one that the host set before.
Hook hookOfHost() {
  return reinterpret_cast<Hook>(
      g_dataset_get_data(g_main_context_default(), "VelmoraMacNative.log"));
}

// One write, so that lines of different threads and processes never mix. A log that can't be
// written to is no reason to fail.
void writeToStandardError(std::string line) {
  line += '\n';
  [[maybe_unused]] const auto written = write(STDERR_FILENO, line.data(), line.size());
}

}  // namespace

void writeLogLine(std::string_view line) noexcept {
  try {
    std::string text(line);
    if (const auto hook = hookOfHost()) {
      hook(text.c_str());
    } else {
      writeToStandardError(std::move(text));
    }
  } catch (...) {  // NOLINT(bugprone-empty-catch): no memory for the line: it is lost
  }
}

void writeLogLineOnce(std::string_view line) noexcept {
  static constinit Mutex mutex;
  try {
    const MutexLock lock(mutex);
    static auto* const written = new std::set<std::string, std::less<>>();  // never ended
    if (!written->insert(std::string(line)).second) return;
  } catch (...) {  // NOLINT(bugprone-empty-catch): no memory: it may be written again
  }
  writeLogLine(line);
}

}  // namespace vlm::platform::glib
