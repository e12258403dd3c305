#pragma once

#import <ScreenCaptureKit/ScreenCaptureKit.h>
#include <memory>

#include "platform/screen_capture_kit.h"

// Hands the samples of one kind on to an output. Keeps it and the stream weakly.
@interface VLMStreamOutput : NSObject <SCStreamOutput> {
  std::weak_ptr<vlm::platform::SCStreamOutput> output_;
  std::weak_ptr<vlm::platform::SCStream> stream_;
}
- (void)serve:(std::weak_ptr<vlm::platform::SCStreamOutput>)output
           of:(std::weak_ptr<vlm::platform::SCStream>)stream;
@end

// Hands on the end of a stream, once.
@interface VLMStreamDelegate : NSObject <SCStreamDelegate> {
  std::weak_ptr<vlm::platform::SCStreamDelegate> delegate_;
  std::weak_ptr<vlm::platform::SCStream> stream_;
}
- (void)serve:(std::weak_ptr<vlm::platform::SCStreamDelegate>)delegate
           of:(std::weak_ptr<vlm::platform::SCStream>)stream;
@end
