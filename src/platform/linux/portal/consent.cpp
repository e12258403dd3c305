#include "platform/linux/portal/consent.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <cstdio>
#include <cstdlib>
#include <string_view>

#include "platform/linux/glib/log_line.h"

namespace vlm::platform::portal {
namespace {

constexpr std::size_t kLongestToken = 256;

const char* fileName() {
  const char* name = std::getenv("VLM_PORTAL_TOKEN_FILE");
  return name == nullptr || *name == '\0' ? nullptr : name;
}

// What goes to the bus is text; a file that holds anything else is no token.
bool isToken(std::string_view text) {
  return !text.empty() && text.size() <= kLongestToken &&
         std::ranges::all_of(text, [](char c) { return c > ' ' && c < 127; });
}

std::string readToken(const char* name) {
  const int file = open(name, O_RDONLY | O_CLOEXEC | O_NONBLOCK);
  if (file < 0) return "";
  std::array<char, kLongestToken + 2> content;
  const auto length = read(file, content.data(), content.size());
  close(file);
  std::string token(content.data(), static_cast<std::size_t>(std::max<ssize_t>(length, 0)));
  if (token.ends_with('\n')) token.pop_back();
  return isToken(token) ? token : "";
}

// Into a new file that takes the other's place: a reader finds the one or the other whole.
bool writeToken(const std::string& name, const std::string& token) {
  std::string next = name + ".XXXXXX";
  const int file = mkostemp(next.data(), O_CLOEXEC);  // with mode 0600
  if (file < 0) return false;
  const bool isWritten =
      write(file, token.data(), token.size()) == static_cast<ssize_t>(token.size()) &&
      fsync(file) == 0;
  const bool isReplaced =
      close(file) == 0 && isWritten && std::rename(next.c_str(), name.c_str()) == 0;
  if (!isReplaced) unlink(next.c_str());
  return isReplaced;
}

}  // namespace

Consent& Consent::shared() {
  static auto* const consent = new Consent();  // never ended, as what may ask for it
  return *consent;
}

std::string Consent::token() {
  const MutexLock lock(mutex_);
  const char* name = fileName();
  const auto stored = name == nullptr ? "" : readToken(name);
  return stored.empty() ? token_ : stored;
}

void Consent::replace(const std::string& token) {
  const MutexLock lock(mutex_);
  token_ = isToken(token) ? token : "";
  const char* name = fileName();
  if (name == nullptr) return;
  if (token_.empty()) {
    unlink(name);
  } else if (!writeToken(name, token_)) {
    glib::writeLogLine("[vlm] the file for the portal's token can't be written");
  }
}

}  // namespace vlm::platform::portal
