// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif
typedef int32_t CVReturn;
typedef struct __CVBuffer * CVBufferRef;
typedef CVBufferRef CVImageBufferRef;
typedef CVImageBufferRef CVPixelBufferRef;
CVReturn CVPixelBufferCreate(CFAllocatorRef allocator, size_t width, size_t height, OSType pixelFormatType, CFDictionaryRef pixelBufferAttributes, CVPixelBufferRef  _Nullable * pixelBufferOut) __attribute__((availability(macos,introduced=10.4)));
uint32_t CVPixelBufferGetPixelFormatType(CVPixelBufferRef pixelBuffer) __attribute__((availability(macos,introduced=10.4)));
size_t CVPixelBufferGetWidth(CVPixelBufferRef pixelBuffer) __attribute__((availability(macos,introduced=10.4)));
size_t CVPixelBufferGetHeight(CVPixelBufferRef pixelBuffer) __attribute__((availability(macos,introduced=10.4)));
size_t CVPixelBufferGetPlaneCount(CVPixelBufferRef pixelBuffer) __attribute__((availability(macos,introduced=10.4)));
typedef enum CVPixelBufferLockFlags : uint64_t CVPixelBufferLockFlags;
enum CVPixelBufferLockFlags : uint64_t {
  kCVPixelBufferLock_ReadOnly = 1
};
CVReturn CVPixelBufferLockBaseAddress(CVPixelBufferRef pixelBuffer, CVPixelBufferLockFlags lockFlags) __attribute__((availability(macos,introduced=10.4)));
CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBufferRef pixelBuffer, CVPixelBufferLockFlags unlockFlags) __attribute__((availability(macos,introduced=10.4)));
void * CVPixelBufferGetBaseAddressOfPlane(CVPixelBufferRef pixelBuffer, size_t planeIndex) __attribute__((availability(macos,introduced=10.4)));
size_t CVPixelBufferGetBytesPerRowOfPlane(CVPixelBufferRef pixelBuffer, size_t planeIndex) __attribute__((availability(macos,introduced=10.4)));
void * CVPixelBufferGetBaseAddress(CVPixelBufferRef pixelBuffer) __attribute__((availability(macos,introduced=10.4)));
size_t CVPixelBufferGetBytesPerRow(CVPixelBufferRef pixelBuffer) __attribute__((availability(macos,introduced=10.4)));
enum { kCVReturnSuccess = 0 };
enum { kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange = 875704438 };
enum { kCVReturnInvalidArgument = -6661 };
enum { kCVPixelFormatType_420YpCbCr8BiPlanarFullRange = 875704422 };
enum { kCVPixelFormatType_32BGRA = 1111970369 };
extern CFStringRef kCVPixelBufferPixelFormatTypeKey __attribute__((availability(macos,introduced=10.4)));
extern CFStringRef kCVPixelBufferIOSurfacePropertiesKey __attribute__((availability(macos,introduced=10.6)));
extern CFStringRef kCVPixelBufferMetalCompatibilityKey __attribute__((availability(macos,introduced=10.11)));
#ifdef __cplusplus
}
#endif
