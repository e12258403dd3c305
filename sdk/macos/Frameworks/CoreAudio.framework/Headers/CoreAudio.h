// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif
typedef UInt32 AudioObjectID;
typedef struct AudioObjectPropertyAddress {
  uint32_t mSelector;
  uint32_t mScope;
  uint32_t mElement;
} AudioObjectPropertyAddress;
int32_t AudioObjectGetPropertyDataSize(AudioObjectID inObjectID, const AudioObjectPropertyAddress * inAddress, UInt32 inQualifierDataSize, const void * inQualifierData, UInt32 * outDataSize) __attribute__((availability(macos,introduced=10.4)));
int32_t AudioObjectGetPropertyData(AudioObjectID inObjectID, const AudioObjectPropertyAddress * inAddress, UInt32 inQualifierDataSize, const void * inQualifierData, UInt32 * ioDataSize, void * outData) __attribute__((availability(macos,introduced=10.4)));
enum { kAudioObjectSystemObject = 1 };
enum { kAudioObjectPropertyScopeGlobal = 1735159650 };
enum { kAudioObjectPropertyScopeInput = 1768845428 };
enum { kAudioObjectPropertyScopeOutput = 1869968496 };
enum { kAudioObjectPropertyElementMain = 0 };
enum { kAudioHardwarePropertyDevices = 1684370979 };
enum { kAudioDevicePropertyStreamConfiguration = 1936482681 };
enum { kAudioObjectPropertyName = 1819173229 };
enum { kAudioDevicePropertyDeviceUID = 1969841184 };
enum { kAudioHardwareBadPropertySizeError = 561211770 };
enum { kAudioHardwareUnspecifiedError = 2003329396 };
#ifdef __cplusplus
}
#endif
