#include "platform/io_kit.h"

#import <IOKit/IOKitLib.h>
#include <cstring>

#include "platform/macos/bridge/owned.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

io_registry_entry_t IORegistryEntryFromPath(std::string_view path) {
  ::io_string_t text{};
  if (path.size() >= sizeof text) return 0;
  std::memcpy(text, path.data(), path.size());
  return ::IORegistryEntryFromPath(::kIOMainPortDefault, text);
}

CFValue IORegistryEntryCreateCFProperty(io_registry_entry_t entry, std::string_view key) {
  const auto name = bridge::toString(key);
  if (!name) return {};
  const bridge::Owned<CFTypeRef> value(
      ::IORegistryEntryCreateCFProperty(entry, name.get(), ::kCFAllocatorDefault, 0));
  return bridge::fromCF(value.get());
}

kern_return_t IOObjectRelease(io_registry_entry_t entry) {
  return ::IOObjectRelease(entry);
}

}  // namespace vlm::platform
