#pragma once

#import <ScreenCaptureKit/ScreenCaptureKit.h>
#include <atomic>
#include <memory>

#include "platform/running_call.h"
#include "platform/screen_capture_kit.h"

// Hands the samples of one kind on to an output. Keeps it and the stream weakly.
@interface VLMStreamOutput : NSObject <SCStreamOutput> {
  std::weak_ptr<vlm::platform::SCStreamOutput> output_;
  std::weak_ptr<vlm::platform::SCStream> stream_;
  std::shared_ptr<vlm::platform::RunningCall> running_;
  std::atomic<bool> closed_;
}
// `running` is marked while the output is called.
- (void)serve:(std::weak_ptr<vlm::platform::SCStreamOutput>)output
           of:(std::weak_ptr<vlm::platform::SCStream>)stream
      marking:(std::shared_ptr<vlm::platform::RunningCall>)running;
// No call of the output begins after this.
- (void)close;
@end

// Hands on the end of a stream, once.
@interface VLMStreamDelegate : NSObject <SCStreamDelegate> {
  std::weak_ptr<vlm::platform::SCStreamDelegate> delegate_;
  std::weak_ptr<vlm::platform::SCStream> stream_;
}
- (void)serve:(std::weak_ptr<vlm::platform::SCStreamDelegate>)delegate
           of:(std::weak_ptr<vlm::platform::SCStream>)stream;
@end
