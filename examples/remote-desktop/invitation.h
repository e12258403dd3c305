// What a person passes from the sharing to the viewing side, by a way that both trust: where to
// connect, how to know the right host, and what lets one in.
#pragma once

#include <array>
#include <charconv>
#include <cstdint>
#include <stdexcept>
#include <string>
#include <string_view>

namespace remote {

using Fingerprint = std::array<std::uint8_t, 32>;  // SHA-256 of the certificate
using Token = std::array<std::uint8_t, 16>;

inline std::string hex(const auto& bytes) {
  constexpr std::string_view kDigits = "0123456789abcdef";
  std::string text;
  for (const std::uint8_t byte : bytes) text += {kDigits[byte >> 4], kDigits[byte & 15]};
  return text;
}

inline void readHex(std::string_view text, auto& bytes) {
  if (text.size() != 2 * bytes.size()) throw std::invalid_argument("the invitation is cut short");
  for (std::size_t i = 0; i < bytes.size(); ++i) {
    const char* begin = text.data() + 2 * i;
    const auto read = std::from_chars(begin, begin + 2, bytes[i], 16);
    if (read.ptr != begin + 2) throw std::invalid_argument("the invitation has a wrong digit");
  }
}

struct Invitation {
  static constexpr std::string_view kScheme = "remote://";

  std::string address;  // HOST:PORT
  Fingerprint fingerprint{};
  Token token{};

  std::string text() const {
    return std::string(kScheme) + address + "/" + hex(fingerprint) + "/" + hex(token);
  }

  static Invitation parse(std::string_view text) {
    const auto first = text.find('/', kScheme.size());
    const auto last = text.rfind('/');
    if (!text.starts_with(kScheme) || first >= last) {
      throw std::invalid_argument("an invitation is remote://HOST:PORT/FINGERPRINT/TOKEN");
    }
    Invitation invitation;
    invitation.address = text.substr(kScheme.size(), first - kScheme.size());
    readHex(text.substr(first + 1, last - first - 1), invitation.fingerprint);
    readHex(text.substr(last + 1), invitation.token);
    return invitation;
  }
};

}  // namespace remote
