#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "platform/dispatch.h"
#include "platform/mutex.h"
#include "platform/portable/object.h"
#include "platform/video_toolbox.h"

namespace vlm::platform {
namespace scripted {

// Delivers what a session has finished, in order, on the session's own queue.
class OutputLine {
 public:
  explicit OutputLine(std::shared_ptr<DispatchQueue> queue) : queue_(std::move(queue)) {}
  // A delivery that is held comes with the next release(), or with the next wait().
  void submit(std::function<void()> delivery, bool hold) VLM_EXCLUDES(mutex_);
  void release() VLM_EXCLUDES(mutex_);
  void wait();

 private:
  const std::shared_ptr<DispatchQueue> queue_;
  Mutex mutex_;
  std::vector<std::function<void()>> held_ VLM_GUARDED_BY(mutex_);
};

// A frame as it reached a compression session.
struct FrameIn {
  std::int32_t width;  // of the session
  std::int32_t height;
  CMTime presentationTimeStamp;
  bool keyframe;  // the first of its session, or forced
  Ref<CVPixelBuffer> image;
};

struct SampleOut {
  OSStatus status = noErr;
  Ref<CMSampleBuffer> sample;
};

struct ImageOut {
  OSStatus status = noErr;
  Ref<CVPixelBuffer> image;
};

// What the machine's codec usually does. Its H.264 is a stand-in that keeps to the framing: the
// sequence parameter set names the size, a frame is one slice that holds its time stamp.
SampleOut compressFrame(const FrameIn& frame);
ImageOut decompressSample(const CMFormatDescription& description, OSType pixelFormat);
// Parts of that, to make samples that are odd in one way: both parameter sets, one NAL unit.
Ref<CMFormatDescription> makeH264Description(std::int32_t width, std::int32_t height);
Ref<CMSampleBuffer> makeCompressedSample(const FrameIn& frame);

}  // namespace scripted

class VTCompressionSession final : public Object {
 public:
  VTCompressionSession(std::int32_t sessionWidth, std::int32_t sessionHeight,
                       std::shared_ptr<DispatchQueue> queue)
      : width(sessionWidth), height(sessionHeight), output(std::move(queue)) {}

  const std::int32_t width;
  const std::int32_t height;
  scripted::OutputLine output;
  bool started = false;
  bool invalidated = false;
};

class VTDecompressionSession final : public Object {
 public:
  VTDecompressionSession(Ref<CMFormatDescription> sessionDescription, OSType format,
                         std::shared_ptr<DispatchQueue> queue)
      : description(std::move(sessionDescription)), pixelFormat(format), output(std::move(queue)) {}

  const Ref<CMFormatDescription> description;
  const OSType pixelFormat;
  scripted::OutputLine output;
  bool invalidated = false;
};

namespace scripted {

struct VideoStage {
  // What comes out for a frame or sample; replaced by a test that wants something else.
  std::function<SampleOut(const FrameIn&)> compress = compressFrame;
  std::function<ImageOut(const VTDecompressionSession&, const CMSampleBuffer&)> decompress;
  // While set, finished frames wait until the session is waited for, released or (a decompression
  // session) invalidated.
  bool holdsOutput = false;
  // All sessions made so far.
  std::vector<Ref<VTCompressionSession>> compressions;
  std::vector<Ref<VTDecompressionSession>> decompressions;
};

}  // namespace scripted
}  // namespace vlm::platform
