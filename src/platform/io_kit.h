#pragma once

#include <cstdint>
#include <string_view>

#include "platform/cf_value.h"

namespace vlm::platform {

// A status of the kernel; 0 is success.
using kern_return_t = std::int32_t;

// An entry of the registry of the machine's devices; 0 is none. Any thread.
using io_registry_entry_t = std::uint32_t;

inline constexpr std::string_view kIORegistryRootPath = "IOService:/";
// Property of the root: the machine's own UUID, as text. Apple defines the name, with a leading k,
// as a macro.
inline constexpr std::string_view IOPlatformUUIDKey = "IOPlatformUUID";

// The entry at `path`, to be released; 0 when there is none.
io_registry_entry_t IORegistryEntryFromPath(std::string_view path);
// Null when the entry has no such property.
CFValue IORegistryEntryCreateCFProperty(io_registry_entry_t entry, std::string_view key);
// 0 when the entry was there to be released.
kern_return_t IOObjectRelease(io_registry_entry_t entry);

}  // namespace vlm::platform
