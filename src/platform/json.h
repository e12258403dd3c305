#pragma once

#include <optional>
#include <string>

#include "platform/cf_value.h"

namespace vlm::platform {

// NSJSONSerialization without options: compact UTF-8 text. Nothing for a value that JSON can't
// express or text that is not UTF-8. Any thread.
std::optional<std::string> NSJSONSerializationData(const CFValue& object);

}  // namespace vlm::platform
