// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once

// By hand: Darwin's own headers, and the literal that the compiler makes constants of.
// names: CGFloat boolean_t
#include <MacTypes.h>
#include <mach/boolean.h>
#include <stdbool.h>
#include <stdint.h>
typedef double CGFloat;
#define CFSTR(text) ((CFStringRef)__builtin___CFStringMakeConstantString("" text ""))

#ifdef __cplusplus
extern "C" {
#endif
typedef struct CGPoint {
  double x;
  double y;
} CGPoint;
typedef struct CGSize {
  double width;
  double height;
} CGSize;
typedef struct CGRect {
  struct CGPoint origin;
  struct CGSize size;
} CGRect;
typedef const void * CFTypeRef;
CFTypeRef CFRetain(CFTypeRef cf);
void CFRelease(CFTypeRef cf);
Boolean CFEqual(CFTypeRef cf1, CFTypeRef cf2);
typedef unsigned long CFTypeID;
CFTypeID CFGetTypeID(CFTypeRef cf);
CFTypeID CFBooleanGetTypeID(void);
typedef const struct __CFBoolean * CFBooleanRef;
Boolean CFBooleanGetValue(CFBooleanRef boolean);
CFTypeID CFNumberGetTypeID(void);
typedef const struct __CFNumber * CFNumberRef;
Boolean CFNumberIsFloatType(CFNumberRef number);
typedef enum CFNumberType : int64_t CFNumberType;
enum CFNumberType : int64_t {
  kCFNumberSInt8Type = 1,
  kCFNumberSInt16Type = 2,
  kCFNumberSInt32Type = 3,
  kCFNumberSInt64Type = 4,
  kCFNumberFloat32Type = 5,
  kCFNumberFloat64Type = 6,
  kCFNumberCharType = 7,
  kCFNumberShortType = 8,
  kCFNumberIntType = 9,
  kCFNumberLongType = 10,
  kCFNumberLongLongType = 11,
  kCFNumberFloatType = 12,
  kCFNumberDoubleType = 13,
  kCFNumberCFIndexType = 14,
  kCFNumberNSIntegerType = 15,
  kCFNumberCGFloatType = 16,
  kCFNumberMaxType = 16
};
Boolean CFNumberGetValue(CFNumberRef number, CFNumberType theType, void * valuePtr);
typedef const struct __CFAllocator * CFAllocatorRef;
CFNumberRef CFNumberCreate(CFAllocatorRef allocator, CFNumberType theType, const void * valuePtr);
CFTypeID CFStringGetTypeID(void);
typedef const struct __CFString * CFStringRef;
typedef long CFIndex;
typedef UInt32 CFStringEncoding;
CFStringRef CFStringCreateWithBytes(CFAllocatorRef alloc, const UInt8 * bytes, CFIndex numBytes, CFStringEncoding encoding, Boolean isExternalRepresentation);
CFIndex CFStringGetLength(CFStringRef theString);
typedef struct CFRange {
  int64_t location;
  int64_t length;
} CFRange;
CFIndex CFStringGetBytes(CFStringRef theString, CFRange range, CFStringEncoding encoding, UInt8 lossByte, Boolean isExternalRepresentation, UInt8 * buffer, CFIndex maxBufLen, CFIndex * usedBufLen);
CFTypeID CFDataGetTypeID(void);
typedef const struct __CFData * CFDataRef;
CFDataRef CFDataCreate(CFAllocatorRef allocator, const UInt8 * bytes, CFIndex length);
CFIndex CFDataGetLength(CFDataRef theData);
const uint8_t * CFDataGetBytePtr(CFDataRef theData);
CFTypeID CFArrayGetTypeID(void);
typedef struct __CFArray * CFMutableArrayRef;
typedef const void *(*CFArrayRetainCallBack)(CFAllocatorRef, const void *);
typedef void (*CFArrayReleaseCallBack)(CFAllocatorRef, const void *);
typedef CFStringRef (*CFArrayCopyDescriptionCallBack)(const void *);
typedef Boolean (*CFArrayEqualCallBack)(const void *, const void *);
typedef struct CFArrayCallBacks {
  CFIndex version;
  CFArrayRetainCallBack retain;
  CFArrayReleaseCallBack release;
  CFArrayCopyDescriptionCallBack copyDescription;
  CFArrayEqualCallBack equal;
} CFArrayCallBacks;
CFMutableArrayRef CFArrayCreateMutable(CFAllocatorRef allocator, CFIndex capacity, const CFArrayCallBacks * callBacks);
void CFArrayAppendValue(CFMutableArrayRef theArray, const void * value);
typedef const struct __CFArray * CFArrayRef;
CFIndex CFArrayGetCount(CFArrayRef theArray);
const void * CFArrayGetValueAtIndex(CFArrayRef theArray, CFIndex idx);
CFTypeID CFDictionaryGetTypeID(void);
typedef struct __CFDictionary * CFMutableDictionaryRef;
typedef const void *(*CFDictionaryRetainCallBack)(CFAllocatorRef, const void *);
typedef void (*CFDictionaryReleaseCallBack)(CFAllocatorRef, const void *);
typedef CFStringRef (*CFDictionaryCopyDescriptionCallBack)(const void *);
typedef Boolean (*CFDictionaryEqualCallBack)(const void *, const void *);
typedef unsigned long CFHashCode;
typedef CFHashCode (*CFDictionaryHashCallBack)(const void *);
typedef struct CFDictionaryKeyCallBacks {
  CFIndex version;
  CFDictionaryRetainCallBack retain;
  CFDictionaryReleaseCallBack release;
  CFDictionaryCopyDescriptionCallBack copyDescription;
  CFDictionaryEqualCallBack equal;
  CFDictionaryHashCallBack hash;
} CFDictionaryKeyCallBacks;
typedef struct CFDictionaryValueCallBacks {
  CFIndex version;
  CFDictionaryRetainCallBack retain;
  CFDictionaryReleaseCallBack release;
  CFDictionaryCopyDescriptionCallBack copyDescription;
  CFDictionaryEqualCallBack equal;
} CFDictionaryValueCallBacks;
CFMutableDictionaryRef CFDictionaryCreateMutable(CFAllocatorRef allocator, CFIndex capacity, const CFDictionaryKeyCallBacks * keyCallBacks, const CFDictionaryValueCallBacks * valueCallBacks);
void CFDictionarySetValue(CFMutableDictionaryRef theDict, const void * key, const void * value);
typedef const struct __CFDictionary * CFDictionaryRef;
const void * CFDictionaryGetValue(CFDictionaryRef theDict, const void * key);
CFIndex CFDictionaryGetCount(CFDictionaryRef theDict);
void CFDictionaryGetKeysAndValues(CFDictionaryRef theDict, const void ** keys, const void ** values);
CFTypeID CFNullGetTypeID(void);
typedef struct __CFRunLoop * CFRunLoopRef;
CFRunLoopRef CFRunLoopGetMain(void);
typedef struct __CFRunLoopSource * CFRunLoopSourceRef;
typedef CFStringRef CFRunLoopMode;
void CFRunLoopAddSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode);
void CFRunLoopRemoveSource(CFRunLoopRef rl, CFRunLoopSourceRef source, CFRunLoopMode mode);
extern const CFBooleanRef kCFBooleanTrue;
extern const CFBooleanRef kCFBooleanFalse;
typedef const struct __CFNull * CFNullRef;
extern const CFNullRef kCFNull;
extern const CFAllocatorRef kCFAllocatorDefault;
typedef enum CFStringBuiltInEncodings : uint32_t CFStringBuiltInEncodings;
enum CFStringBuiltInEncodings : uint32_t {
  kCFStringEncodingMacRoman = 0,
  kCFStringEncodingUTF16 = 256,
  kCFStringEncodingUnicode = 256,
  kCFStringEncodingISOLatin1 = 513,
  kCFStringEncodingWindowsLatin1 = 1280,
  kCFStringEncodingASCII = 1536,
  kCFStringEncodingNextStepLatin = 2817,
  kCFStringEncodingNonLossyASCII = 3071,
  kCFStringEncodingUTF8 = 134217984,
  kCFStringEncodingUTF32 = 201326848,
  kCFStringEncodingUTF16BE = 268435712,
  kCFStringEncodingUTF16LE = 335544576,
  kCFStringEncodingUTF32BE = 402653440,
  kCFStringEncodingUTF32LE = 469762304
};
extern const CFArrayCallBacks kCFTypeArrayCallBacks;
extern const CFDictionaryKeyCallBacks kCFTypeDictionaryKeyCallBacks;
extern const CFDictionaryValueCallBacks kCFTypeDictionaryValueCallBacks;
extern const CFRunLoopMode kCFRunLoopDefaultMode;
#ifdef __cplusplus
}
#endif
