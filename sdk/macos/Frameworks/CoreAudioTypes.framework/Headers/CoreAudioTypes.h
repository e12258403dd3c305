// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>

// By hand: never looked into here.
// names: AudioTimeStamp
#include <MacTypes.h>
#include <stdint.h>
typedef struct AudioTimeStamp AudioTimeStamp;

#ifdef __cplusplus
extern "C" {
#endif
typedef struct AudioBuffer {
  UInt32 mNumberChannels;
  UInt32 mDataByteSize;
  void * mData;
} AudioBuffer;
typedef struct AudioBufferList {
  UInt32 mNumberBuffers;
  AudioBuffer mBuffers[1];
} AudioBufferList;
typedef UInt32 AudioFormatID;
typedef UInt32 AudioFormatFlags;
typedef struct AudioStreamBasicDescription {
  double mSampleRate;
  AudioFormatID mFormatID;
  AudioFormatFlags mFormatFlags;
  UInt32 mBytesPerPacket;
  UInt32 mFramesPerPacket;
  UInt32 mBytesPerFrame;
  UInt32 mChannelsPerFrame;
  UInt32 mBitsPerChannel;
  UInt32 mReserved;
} AudioStreamBasicDescription;
#ifdef __cplusplus
}
#endif
