#pragma once

#import <CoreMedia/CoreMedia.h>
#import <Foundation/Foundation.h>

#include "standin/engine.h"
#include "standin/objects.h"

// The engine's objects, counted by Foundation.
@interface StandInPixelBuffer : NSObject {
 @public
  e::Ref<e::CVPixelBuffer> it;
}
@end
@interface StandInData : NSObject {
 @public
  e::Ref<e::CMBlockBuffer> it;
}
@end
@interface StandInDescription : NSObject {
 @public
  e::Ref<e::CMFormatDescription> it;
  OSType kind;
  AudioStreamBasicDescription audio;
}
@end
@interface StandInSample : NSObject {
 @public
  e::Ref<e::CMSampleBuffer> it;
  StandInData* data;
  StandInPixelBuffer* image;
  StandInDescription* description;
  NSMutableArray* attachments;
}
@end

namespace standin {

// What an encoder makes; with one reference, as the two below.
StandInSample* sampleOf(e::Ref<e::CMSampleBuffer> it);
StandInPixelBuffer* pixelBufferOf(e::Ref<e::CVPixelBuffer> it);

inline e::CMTime toEngine(CMTime time) {
  return (time.flags & kCMTimeFlags_Valid) == 0 ? e::CMTime{}
                                                : e::CMTime{time.value, time.timescale};
}
inline CMTime fromEngine(e::CMTime time) {
  return time.timescale == 0 ? kCMTimeInvalid : CMTimeMake(time.value, time.timescale);
}

}  // namespace standin
