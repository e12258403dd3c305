// Titles and classes that a hostile client sets: whatever their bytes, what leaves the decoding is
// valid UTF-8, and a shadow never leaves a window with nothing to show.
#include <glib.h>

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <string>
#include <string_view>
#include <vector>

#include "platform/linux/x11/shadow.h"
#include "platform/linux/x11/text_encoding.h"

namespace {

using namespace vlm::platform;

void requireUtf8(std::string text) {
  std::ranges::replace(text, '\0', ' ');  // a character of UTF-8 that GLib refuses
  if (g_utf8_validate_len(text.data(), text.size(), nullptr) == FALSE) std::abort();
}

void requireRemainder(std::string_view bytes) {
  std::vector<std::uint32_t> property(bytes.size() / sizeof(std::uint32_t));
  std::memcpy(property.data(), bytes.data(), property.size() * sizeof(std::uint32_t));
  const x11::Size window{640, 480};
  if (x11::shadowIn(property, window).within(wholeOf(window)).isEmpty()) std::abort();
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const std::string_view bytes(reinterpret_cast<const char*>(data), size);
  requireUtf8(x11::fromLatin1(bytes));
  requireUtf8(x11::fromCompoundText(bytes));
  requireUtf8(x11::validUtf8(bytes));
  requireRemainder(bytes);
  return 0;
}
