#pragma once

#include "platform/cf_value.h"

namespace vlm::system {

// Overwrites secret bytes before their memory is given back. The compiler can't leave it out.
inline void wipe(platform::CFData& secret) noexcept {
  for (auto& byte : secret) byte = 0;
  asm volatile("" : : "r"(secret.data()) : "memory");
}

// A value that holds a secret, alone or as entries of a dictionary, and wipes it at the end of the
// scope, however the scope ends.
class SecretValue {
 public:
  SecretValue() = default;
  explicit SecretValue(platform::CFValue secret) noexcept : value(std::move(secret)) {}
  ~SecretValue() { wipeAll(value); }
  SecretValue(const SecretValue&) = delete;
  SecretValue& operator=(const SecretValue&) = delete;

  platform::CFValue value;

 private:
  static void wipeAll(platform::CFValue& secret) noexcept {
    if (auto* bytes = secret.as<platform::CFData>()) wipe(*bytes);
    if (auto* entries = secret.as<platform::CFDictionary>()) {
      for (auto& [key, entry] : *entries) wipeAll(entry);
    }
  }
};

}  // namespace vlm::system
