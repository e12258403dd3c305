// Core Foundation on Foundation's objects: every reference is an Objective-C object, so that the two
// bridge as on a Mac. What a Mac would end the process for ends it here too.
#import <ApplicationServices/ApplicationServices.h>
#import <Foundation/Foundation.h>

#include <cstdlib>
#include <cstring>

#include "standin/objects.h"

using standin::object;

namespace {

bool isFloat(NSNumber* number) {
  const char kind = *[number objCType];
  return kind == 'd' || kind == 'f';
}

id checked(const void* reference) {
  if (reference == nullptr) std::abort();
  return object(reference);
}

}  // namespace

@implementation NSString (StandIn)
- (BOOL)localizedCaseInsensitiveContainsString:(NSString*)part {
  return [self rangeOfString:part options:NSCaseInsensitiveSearch].length > 0;
}
@end

extern "C" {

CFTypeRef CFRetain(CFTypeRef reference) { return [checked(reference) retain]; }
void CFRelease(CFTypeRef reference) { [checked(reference) release]; }
Boolean CFEqual(CFTypeRef a, CFTypeRef b) { return [checked(a) isEqual:checked(b)]; }

CFTypeID CFBooleanGetTypeID(void) { return 21; }
CFTypeID CFNumberGetTypeID(void) { return 22; }
CFTypeID CFStringGetTypeID(void) { return 7; }
CFTypeID CFDataGetTypeID(void) { return 20; }
CFTypeID CFArrayGetTypeID(void) { return 19; }
CFTypeID CFDictionaryGetTypeID(void) { return 18; }
CFTypeID CFNullGetTypeID(void) { return 16; }
CFTypeID CFGetTypeID(CFTypeRef reference) {
  const id it = checked(reference);
  if (reference == kCFBooleanTrue || reference == kCFBooleanFalse) return CFBooleanGetTypeID();
  if ([it isKindOfClass:[NSNumber class]]) return CFNumberGetTypeID();
  if ([it isKindOfClass:[NSString class]]) return CFStringGetTypeID();
  if ([it isKindOfClass:[NSData class]]) return CFDataGetTypeID();
  if ([it isKindOfClass:[NSArray class]]) return CFArrayGetTypeID();
  if ([it isKindOfClass:[NSDictionary class]]) return CFDictionaryGetTypeID();
  if ([it isKindOfClass:[NSNull class]]) return CFNullGetTypeID();
  if ([it isKindOfClass:[StandInElement class]]) return AXUIElementGetTypeID();
  if ([it isKindOfClass:[StandInGeometry class]]) return AXValueGetTypeID();
  return 1;
}

Boolean CFBooleanGetValue(CFBooleanRef boolean) { return boolean == kCFBooleanTrue; }

CFNumberRef CFNumberCreate(CFAllocatorRef, CFNumberType type, const void* value) {
  NSNumber* const number =
      type == kCFNumberDoubleType
          ? [[NSNumber alloc] initWithDouble:*static_cast<const double*>(value)]
          : [[NSNumber alloc] initWithLongLong:*static_cast<const long long*>(value)];
  return reinterpret_cast<CFNumberRef>(number);
}
Boolean CFNumberIsFloatType(CFNumberRef number) { return isFloat(object(number)); }
Boolean CFNumberGetValue(CFNumberRef reference, CFNumberType type, void* out) {
  NSNumber* const number = object(reference);
  if (type == kCFNumberDoubleType) {
    *static_cast<double*>(out) = [number doubleValue];
  } else {
    *static_cast<long long*>(out) = [number longLongValue];
  }
  return true;
}

CFStringRef CFStringCreateWithBytes(CFAllocatorRef, const UInt8* bytes, CFIndex size,
                                    CFStringEncoding, Boolean) {
  return reinterpret_cast<CFStringRef>([[NSString alloc] initWithBytes:bytes
                                                                length:static_cast<NSUInteger>(size)
                                                              encoding:NSUTF8StringEncoding]);
}
CFIndex CFStringGetLength(CFStringRef string) {
  return static_cast<CFIndex>([static_cast<NSString*>(checked(string)) length]);
}
CFIndex CFStringGetBytes(CFStringRef string, CFRange range, CFStringEncoding, UInt8, Boolean,
                         UInt8* buffer, CFIndex room, CFIndex* used) {
  NSData* const data = [static_cast<NSString*>(checked(string)) dataUsingEncoding:NSUTF8StringEncoding
                                                            allowLossyConversion:YES];
  const auto size = static_cast<CFIndex>([data length]);
  if (buffer != nullptr && room >= size) std::memcpy(buffer, [data bytes], [data length]);
  if (used != nullptr) *used = size;
  return static_cast<CFIndex>(range.length);
}

CFDataRef CFDataCreate(CFAllocatorRef, const UInt8* bytes, CFIndex size) {
  return reinterpret_cast<CFDataRef>([[NSData alloc] initWithBytes:bytes
                                                            length:static_cast<NSUInteger>(size)]);
}
CFIndex CFDataGetLength(CFDataRef data) {
  return static_cast<CFIndex>([static_cast<NSData*>(checked(data)) length]);
}
const UInt8* CFDataGetBytePtr(CFDataRef data) {
  return static_cast<const UInt8*>([static_cast<NSData*>(checked(data)) bytes]);
}

CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef, CFIndex, const CFArrayCallBacks*) {
  return reinterpret_cast<CFMutableArrayRef>([[NSMutableArray alloc] init]);
}
void CFArrayAppendValue(CFMutableArrayRef array, const void* value) {
  [static_cast<NSMutableArray*>(checked(array)) addObject:checked(value)];
}
CFIndex CFArrayGetCount(CFArrayRef array) {
  return static_cast<CFIndex>([static_cast<NSArray*>(checked(array)) count]);
}
const void* CFArrayGetValueAtIndex(CFArrayRef array, CFIndex index) {
  return [static_cast<NSArray*>(checked(array)) objectAtIndex:static_cast<NSUInteger>(index)];
}

CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef, CFIndex,
                                                 const CFDictionaryKeyCallBacks*,
                                                 const CFDictionaryValueCallBacks*) {
  return reinterpret_cast<CFMutableDictionaryRef>([[NSMutableDictionary alloc] init]);
}
void CFDictionarySetValue(CFMutableDictionaryRef dictionary, const void* key, const void* value) {
  [static_cast<NSMutableDictionary*>(checked(dictionary)) setObject:checked(value)
                                                             forKey:checked(key)];
}
const void* CFDictionaryGetValue(CFDictionaryRef dictionary, const void* key) {
  return [static_cast<NSDictionary*>(checked(dictionary)) objectForKey:checked(key)];
}
CFIndex CFDictionaryGetCount(CFDictionaryRef dictionary) {
  return static_cast<CFIndex>([static_cast<NSDictionary*>(checked(dictionary)) count]);
}
void CFDictionaryGetKeysAndValues(CFDictionaryRef dictionary, const void** keys,
                                  const void** values) {
  NSDictionary* const entries = checked(dictionary);
  for (id key in entries) {
    *keys++ = key;
    *values++ = [entries objectForKey:key];
  }
}

}  // extern "C"
