#include "platform/linux/identity/machine_id.h"

#include <algorithm>
#include <cctype>
#include <fstream>

namespace vlm::platform::identity {
namespace {

constexpr std::size_t kUuidDigits = 32;

// The machine's own id: made once when the system was installed, readable by every user. The second
// place is where it is on systems that are not run by systemd.
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

std::optional<std::string> machineUuid() {
  auto digits = machineIdDigits();
  if (digits.empty()) return std::nullopt;
  return uuidText(std::move(digits));
}

}  // namespace vlm::platform::identity
