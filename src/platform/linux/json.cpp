#include "platform/json.h"

#include <nlohmann/json.hpp>

namespace vlm::platform {
namespace {

using Json = nlohmann::json;

// Nothing for a value that JSON has no form for.
std::optional<Json> jsonOf(const CFValue& value) {
  if (value.isNull()) return Json();
  if (const auto* truth = value.as<bool>()) return Json(*truth);
  if (const auto* number = value.as<std::int64_t>()) return Json(*number);
  if (const auto* number = value.as<double>()) return Json(*number);
  if (const auto* text = value.as<std::string>()) return Json(*text);
  if (const auto* array = value.as<CFArray>()) {
    Json result = Json::array();
    for (const auto& element : *array) {
      auto json = jsonOf(element);
      if (!json) return std::nullopt;
      result.push_back(std::move(*json));
    }
    return result;
  }
  if (const auto* dictionary = value.as<CFDictionary>()) {
    Json result = Json::object();
    for (const auto& [key, entry] : *dictionary) {
      auto json = jsonOf(entry);
      if (!json) return std::nullopt;
      result[key] = std::move(*json);
    }
    return result;
  }
  return std::nullopt;
}

}  // namespace

std::optional<std::string> NSJSONSerializationData(const CFValue& object) {
  const auto json = jsonOf(object);
  if (!json) return std::nullopt;
  try {
    return json->dump();
  } catch (const Json::exception&) {  // text that is not UTF-8
    return std::nullopt;
  }
}

}  // namespace vlm::platform
