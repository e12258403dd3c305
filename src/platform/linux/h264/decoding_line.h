#pragma once

#include <condition_variable>
#include <cstddef>
#include <memory>
#include <utility>

#include "platform/dispatch.h"
#include "platform/linux/h264/avc_decoder.h"
#include "platform/linux/h264/decoded_picture.h"
#include "platform/mutex.h"
#include "platform/portable/thread_names.h"
#include "platform/video_toolbox.h"

namespace vlm::platform::h264 {

// Counts the samples that have not been delivered yet.
class Backlog {
 public:
  // False when there is no room.
  bool enter() VLM_EXCLUDES(mutex_);
  void leave() VLM_EXCLUDES(mutex_);

 private:
  Mutex mutex_;
  std::condition_variable_any left_;
  std::size_t waiting_ VLM_GUARDED_BY(mutex_) = 0;
};

// The codec thread's alone once the session is made.
class SampleDecoder {
 public:
  SampleDecoder(std::unique_ptr<AvcDecoder> decoder, OSType format)
      : decoder_(std::move(decoder)), converter_(format) {}

  // Decodes the sample and calls the handler with what came of it.
  void deliver(const CMSampleBuffer& sample, const VTDecompressionOutputHandler& handler);

 private:
  // `image` is written only when there is one to show.
  OSStatus decode(const CMSampleBuffer& sample, Ref<CVPixelBuffer>& image);

  const std::unique_ptr<AvcDecoder> decoder_;
  PictureConverter converter_;
};

// Where samples wait for their turn.
struct DecodingLine {
  Backlog backlog;
  const std::shared_ptr<DispatchQueue> queue =
      dispatch_queue_create(thread_names::kDecoder, DispatchQoS::userInteractive);
};

// A stream that changes its parameter sets ends a session and makes the next one right after, on
// the same thread. So a new session goes on with the line of the session that its thread ended
// last, while samples wait there: a stream that changes all the time has one codec thread and one
// bound on what waits, however many sessions it makes. Any thread.
std::shared_ptr<DecodingLine> lineForNewSession();
// The calling thread has ended the session of this line.
void leaveLine(const std::shared_ptr<DecodingLine>& line);

}  // namespace vlm::platform::h264
