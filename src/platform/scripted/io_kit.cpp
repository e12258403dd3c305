#include "platform/io_kit.h"

#include "platform/scripted/machine/machine.h"

namespace vlm::platform {
namespace {

constexpr io_registry_entry_t kRoot = 7;

scripted::SystemStage& systemStage() {
  return scripted::Machine::current().system;
}

}  // namespace

io_registry_entry_t IORegistryEntryFromPath(std::string_view path) {
  scripted::Machine::current().journal.enter("IORegistryEntryFromPath", {path});
  return systemStage().hasRegistryRoot && path == kIORegistryRootPath ? kRoot : 0;
}

CFValue IORegistryEntryCreateCFProperty(io_registry_entry_t entry, std::string_view key) {
  scripted::Machine::current().journal.enter("IORegistryEntryCreateCFProperty", {entry, key});
  return entry == kRoot && key == IOPlatformUUIDKey ? systemStage().platformUuid : CFValue();
}

kern_return_t IOObjectRelease(io_registry_entry_t entry) {
  return scripted::Machine::current().journal.enter("IOObjectRelease", {entry}).status;
}

}  // namespace vlm::platform
