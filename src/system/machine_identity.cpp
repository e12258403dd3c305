#include "system/machine_identity.h"

#include "platform/io_kit.h"

namespace vlm::system {
namespace {

class RegistryEntry {
 public:
  explicit RegistryEntry(std::string_view path) : entry_(platform::IORegistryEntryFromPath(path)) {}
  ~RegistryEntry() {
    if (entry_ != 0) platform::IOObjectRelease(entry_);
  }
  RegistryEntry(const RegistryEntry&) = delete;
  RegistryEntry& operator=(const RegistryEntry&) = delete;

  // Null when there is no entry or it has no such property.
  platform::CFValue property(std::string_view key) const {
    if (entry_ == 0) return {};
    return platform::IORegistryEntryCreateCFProperty(entry_, key);
  }

 private:
  platform::io_registry_entry_t entry_;
};

}  // namespace

std::optional<std::string> machineId() {
  const RegistryEntry root(platform::kIORegistryRootPath);
  const auto uuid = root.property(platform::IOPlatformUUIDKey);
  const auto* text = uuid.as<std::string>();
  return text ? std::optional(*text) : std::nullopt;
}

}  // namespace vlm::system
