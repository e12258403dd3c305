#include "platform/json.h"

#include "platform/scripted/machine/machine.h"

namespace vlm::platform {
namespace {

std::string quoted(const std::string& text) {
  std::string result = "\"";
  for (const char letter : text) {
    if (letter == '"' || letter == '\\') result += '\\';
    result += letter;
  }
  return result + '"';
}

// This machine writes texts in arrays and dictionaries, which is all that it is asked for.
std::string write(const CFValue& value) {
  std::string inner;
  if (const auto* array = value.as<CFArray>()) {
    for (const auto& element : *array) inner += (inner.empty() ? "" : ",") + write(element);
    return "[" + inner + "]";
  }
  if (const auto* dictionary = value.as<CFDictionary>()) {
    for (const auto& [key, entry] : *dictionary) {
      inner += (inner.empty() ? "" : ",") + quoted(key) + ":" + write(entry);
    }
    return "{" + inner + "}";
  }
  return quoted(*value.as<std::string>());
}

}  // namespace

std::optional<std::string> NSJSONSerializationData(const CFValue& object) {
  if (scripted::Machine::current().journal.enter("dataWithJSONObject").nothing) return std::nullopt;
  return write(object);
}

}  // namespace vlm::platform
