#pragma once

#include <string>
#include <string_view>

namespace vlm::platform::x11 {

// Text of the old kinds as UTF-8. What can't be decoded becomes U+FFFD, so that the result is
// valid.
std::string fromLatin1(std::string_view text);
// ISO 2022 with the escape sequences of the X consortium's "Compound Text Encoding".
std::string fromCompoundText(std::string_view text);
// Text that claims to be UTF-8.
std::string validUtf8(std::string_view text);

}  // namespace vlm::platform::x11
