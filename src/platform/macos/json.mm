#include "platform/json.h"

#import <Foundation/Foundation.h>

#include "platform/macos/bridge/guard.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

std::optional<std::string> NSJSONSerializationData(const CFValue& object) {
  std::optional<std::string> result;
  bridge::guarded([&] {
    const auto native = bridge::toCF(object);
    if (!native || ![::NSJSONSerialization isValidJSONObject:(id)native.get()]) return;
    NSData* const data = [::NSJSONSerialization dataWithJSONObject:(id)native.get()
                                                           options:NSJSONWritingOptions{}
                                                             error:nullptr];
    if (data != nil) result.emplace(static_cast<const char*>(data.bytes), data.length);
  });
  return result;
}

}  // namespace vlm::platform
