#include "platform/macos/bridge/stream_receivers.h"

#include <utility>

#include "platform/macos/bridge/native.h"
#include "platform/macos/bridge/values.h"

namespace platform = vlm::platform;

@implementation VLMStreamOutput

- (void)serve:(std::weak_ptr<platform::SCStreamOutput>)output
           of:(std::weak_ptr<platform::SCStream>)stream
      marking:(std::shared_ptr<platform::RunningCall>)running {
  output_ = std::move(output);
  stream_ = std::move(stream);
  running_ = std::move(running);
}

- (void)close {
  closed_ = true;
}

- (void)stream:(SCStream*)stream
    didOutputSampleBuffer:(CMSampleBufferRef)sample
                   ofType:(SCStreamOutputType)type {
  const auto output = output_.lock();
  const auto from = stream_.lock();
  if (closed_ || output == nullptr || from == nullptr || sample == nullptr) return;
  const platform::RunningCall::Scope scope(*running_);
  @autoreleasepool {
    output->didOutputSampleBuffer(*from, *platform::bridge::lent<platform::CMSampleBuffer>(sample),
                                  static_cast<platform::SCStreamOutputType>(type));
  }
}

@end

@implementation VLMStreamDelegate

- (void)serve:(std::weak_ptr<platform::SCStreamDelegate>)delegate
           of:(std::weak_ptr<platform::SCStream>)stream {
  delegate_ = std::move(delegate);
  stream_ = std::move(stream);
}

- (void)stream:(SCStream*)stream didStopWithError:(NSError*)error {
  const auto delegate = std::exchange(delegate_, {}).lock();
  const auto from = stream_.lock();
  if (delegate == nullptr || from == nullptr) return;
  @autoreleasepool {
    delegate->didStopWithError(
        *from, platform::bridge::fromError(error).value_or(platform::NSError{"no reason given"}));
  }
}

@end
