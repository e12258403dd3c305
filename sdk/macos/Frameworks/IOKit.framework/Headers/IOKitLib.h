// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>

// By hand: IOKit/IOTypes.h, as Apple publishes it with its kernel.
// names: io_string_t
#include <mach/mach_types.h>
#include <stdint.h>
typedef char io_string_t[512];

#ifdef __cplusplus
extern "C" {
#endif
typedef mach_port_t io_object_t;
typedef io_object_t io_registry_entry_t;
io_registry_entry_t IORegistryEntryFromPath(mach_port_t, io_string_t);
typedef UInt32 IOOptionBits;
CFTypeRef IORegistryEntryCreateCFProperty(io_registry_entry_t, CFStringRef, CFAllocatorRef, IOOptionBits);
kern_return_t IOObjectRelease(io_object_t);
extern const mach_port_t kIOMainPortDefault;
#ifdef __cplusplus
}
#endif
