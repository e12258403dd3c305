#include "platform/linux/glib/text.h"

#include <glib.h>

#include <memory>
#include <string>

namespace vlm::platform::glib {
namespace {

struct FreeText {
  void operator()(char* text) const { g_free(text); }
};
using OwnedText = std::unique_ptr<char, FreeText>;

// Equal for texts that differ only in case, by the rules of the user's locale too, or in how their
// characters are composed. Bytes that are not UTF-8, as old clients put into titles, are replaced.
std::string comparable(std::string_view text) {
  const auto size = static_cast<gssize>(text.size());
  const OwnedText valid(g_utf8_make_valid(text.data(), size));
  const OwnedText lower(g_utf8_strdown(valid.get(), -1));
  const OwnedText folded(g_utf8_casefold(lower.get(), -1));
  const OwnedText composed(g_utf8_normalize(folded.get(), -1, G_NORMALIZE_DEFAULT_COMPOSE));
  return composed.get();
}

// An "e" is no part of an "e" that goes on with an accent.
bool goesOnAt(const std::string& text, std::size_t end) {
  return g_unichar_ismark(g_utf8_get_char(text.c_str() + end)) != 0;
}

}  // namespace

bool containsIgnoringCase(std::string_view text, std::string_view part) {
  if (part.empty()) return false;
  const auto whole = comparable(text);
  const auto wanted = comparable(part);
  auto found = whole.find(wanted);
  while (found != std::string::npos && goesOnAt(whole, found + wanted.size())) {
    found = whole.find(wanted, found + 1);
  }
  return found != std::string::npos;
}

bool areSameCharacters(std::string_view a, std::string_view b) {
  if (a == b) return true;
  const auto decomposed = [](std::string_view text) {
    return OwnedText(
        g_utf8_normalize(text.data(), static_cast<gssize>(text.size()), G_NORMALIZE_DEFAULT));
  };
  const auto left = decomposed(a);
  const auto right = decomposed(b);
  // What is not UTF-8 has no other form.
  return left && right && std::string_view(left.get()) == right.get();
}

bool isUri(std::string_view text) {
  return g_uri_is_valid(std::string(text).c_str(), G_URI_FLAGS_NONE, nullptr) != FALSE;
}

}  // namespace vlm::platform::glib
