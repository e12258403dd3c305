#pragma once

#include <cstdint>
#include <span>
#include <string>

#include "platform/cf_value.h"

// Small binary secrets in the system's keychain, addressed by a service and an account. Nothing is
// kept here between calls, and no copy of a secret stays behind in memory. Any thread.
namespace vlm::system {

struct SecretAddress {
  std::string service;
  std::string account;
};

// Replaces what is stored at the address. False when the keychain did not take the secret: an
// earlier secret may then be gone.
bool setSecret(const SecretAddress& address, std::span<const std::uint8_t> secret);

// The length of the secret when it is at most `capacity`, its bytes copied to `out` unless that is
// null; the length negated when it is more; 0 when there is none or it is empty.
std::int32_t getSecret(const SecretAddress& address, std::uint8_t* out, std::int32_t capacity);

// False when there was nothing to delete, or the keychain refused.
bool deleteSecret(const SecretAddress& address);

}  // namespace vlm::system
