// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>

#ifdef __cplusplus
extern "C" {
#endif
typedef struct OpaqueAudioComponentInstance OpaqueAudioComponentInstance;
typedef OpaqueAudioComponentInstance * AudioComponentInstance;
typedef AudioComponentInstance AudioUnit;
typedef UInt32 AudioUnitPropertyID;
typedef UInt32 AudioUnitScope;
typedef UInt32 AudioUnitElement;
OSStatus AudioUnitSetProperty(AudioUnit, AudioUnitPropertyID, AudioUnitScope, AudioUnitElement, const void *, UInt32);
enum { kAudioOutputUnitProperty_CurrentDevice = 2000 };
enum { kAudioUnitScope_Global = 0 };
#ifdef __cplusplus
}
#endif
