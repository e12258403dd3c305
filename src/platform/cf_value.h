#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <string_view>
#include <utility>
#include <variant>
#include <vector>

#include "platform/core_graphics.h"
#include "platform/ref.h"

namespace vlm::platform {

class AXUIElement;
class CFValue;

using CFArray = std::vector<CFValue>;
using CFDictionary = std::map<std::string, CFValue, std::less<>>;
using CFData = std::vector<std::uint8_t>;

// The one value type for everything the platform passes as a property list: session properties,
// frame options, sample attachments, window dictionaries, accessibility attributes, JSON. A value
// knows its own type, so that "present but of another type" differs from "absent".
class CFValue {
 public:
  CFValue() = default;  // null
  // A constraint and not an overload for bool: a pointer or a number must never become a truth
  // value by itself.
  template <class T>
  requires std::is_same_v<T, bool> CFValue(T value) : value_(value) {}        // NOLINT
  CFValue(std::int32_t value) : value_(static_cast<std::int64_t>(value)) {}   // NOLINT
  CFValue(std::uint32_t value) : value_(static_cast<std::int64_t>(value)) {}  // NOLINT
  CFValue(std::int64_t value) : value_(value) {}                              // NOLINT
  CFValue(double value) : value_(value) {}                                    // NOLINT
  CFValue(std::string value) : value_(std::move(value)) {}                    // NOLINT
  CFValue(std::string_view value) : value_(std::string(value)) {}             // NOLINT
  CFValue(const char* value) : value_(std::string(value)) {}                  // NOLINT
  CFValue(CFData value) : value_(std::move(value)) {}                         // NOLINT
  CFValue(CFArray value) : value_(std::move(value)) {}                        // NOLINT
  CFValue(CFDictionary value) : value_(std::move(value)) {}                   // NOLINT
  CFValue(CGPoint value) : value_(value) {}                                   // NOLINT
  CFValue(CGSize value) : value_(value) {}                                    // NOLINT
  CFValue(Ref<AXUIElement> value) : value_(std::move(value)) {}               // NOLINT

  bool isNull() const { return std::holds_alternative<std::monostate>(value_); }

  // The value when it has exactly this type, else null. T is bool, std::int64_t, double,
  // std::string, CFData, CFArray, CFDictionary, CGPoint, CGSize or Ref<AXUIElement>.
  template <class T>
  const T* as() const {
    return std::get_if<T>(&value_);
  }
  template <class T>
  T* as() {
    return std::get_if<T>(&value_);
  }

  // The entry under `key` when this is a dictionary that has one, else null.
  const CFValue* find(std::string_view key) const;

  friend bool operator==(const CFValue& a, const CFValue& b) { return a.value_ == b.value_; }

 private:
  std::variant<std::monostate, bool, std::int64_t, double, std::string, CFData, CFArray,
               CFDictionary, CGPoint, CGSize, Ref<AXUIElement>>
      value_;
};

inline const CFValue* CFValue::find(std::string_view key) const {
  const auto* dictionary = as<CFDictionary>();
  if (dictionary == nullptr) return nullptr;
  const auto entry = dictionary->find(key);
  return entry == dictionary->end() ? nullptr : &entry->second;
}

}  // namespace vlm::platform
