#include "platform/io_kit.h"

#include <algorithm>
#include <cctype>
#include <fstream>
#include <string>

namespace vlm::platform {
namespace {

// There is one entry, the root: the machine itself.
constexpr io_registry_entry_t kRoot = 1;

constexpr std::size_t kUuidDigits = 32;

// The machine's own id: made once when the system was installed, readable by everybody. The second
// place is where it stands on systems that are not run by systemd.
std::string machineIdDigits() {
  for (const char* path : {"/etc/machine-id", "/var/lib/dbus/machine-id"}) {
    std::ifstream file(path);
    std::string digits;
    file >> digits;
    const auto isHex = [](unsigned char each) { return std::isxdigit(each) != 0; };
    if (digits.size() == kUuidDigits && std::ranges::all_of(digits, isHex)) return digits;
  }
  return {};
}

// 8-4-4-4-12, in capitals as every other platform of this library writes it.
std::string uuidText(std::string digits) {
  for (const std::size_t at : {20, 16, 12, 8}) digits.insert(at, 1, '-');
  for (char& each : digits)
    each = static_cast<char>(std::toupper(static_cast<unsigned char>(each)));
  return digits;
}

}  // namespace

io_registry_entry_t IORegistryEntryFromPath(std::string_view path) {
  return path == kIORegistryRootPath ? kRoot : 0;
}

CFValue IORegistryEntryCreateCFProperty(io_registry_entry_t entry, std::string_view key) {
  if (entry != kRoot || key != kIOPlatformUUIDKey) return {};
  auto digits = machineIdDigits();
  return digits.empty() ? CFValue() : CFValue(uuidText(std::move(digits)));
}

void IOObjectRelease(io_registry_entry_t) {}

}  // namespace vlm::platform
