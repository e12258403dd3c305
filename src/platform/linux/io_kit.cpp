#include "platform/io_kit.h"

#include "platform/linux/identity/machine_id.h"

namespace vlm::platform {
namespace {

// There is one entry, the root: the machine itself.
constexpr io_registry_entry_t kRoot = 1;

}  // namespace

io_registry_entry_t IORegistryEntryFromPath(std::string_view path) {
  return path == kIORegistryRootPath ? kRoot : 0;
}

CFValue IORegistryEntryCreateCFProperty(io_registry_entry_t entry, std::string_view key) {
  if (entry != kRoot || key != IOPlatformUUIDKey) return {};
  auto uuid = identity::machineUuid();
  return uuid ? CFValue(std::move(*uuid)) : CFValue();
}

kern_return_t IOObjectRelease(io_registry_entry_t entry) {
  constexpr kern_return_t kInvalidArgument = 4;
  return entry == kRoot ? 0 : kInvalidArgument;
}

}  // namespace vlm::platform
