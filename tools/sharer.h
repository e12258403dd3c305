#pragma once

#include <atomic>
#include <cstdint>
#include <functional>
#include <optional>
#include <string>

#include "counts.h"
#include "library.h"
#include "locked.h"
#include "main_loop.h"
#include "target_watch.h"
#include "values.h"
#include "wav_file.h"

namespace vlm::tools {

// What to capture: a window if given, else an application if given, else a display.
struct Target {
  std::uint32_t display = 0;
  std::optional<std::uint32_t> window;
  std::optional<std::string> application;
};

struct SharingOptions {
  Target target;
  std::int32_t fps = 30;
  Size maxSize;  // no limit when empty
  BitRate bitRate{8'000'000};
  bool lowLatency = false;
  std::string audioFile;  // where the system's audio goes; none when empty
};

std::string description(const Target& target);

// The sharing side: captures a target and encodes what comes, into one stream. While the screen is
// still, the last frame is submitted again until it is as sharp as it gets. Public members are for
// the main thread.
class Sharer {
 public:
  // Gets each access unit on a codec thread, in order. False asks for a key frame. What it throws
  // makes the loop fail.
  using Sink = std::function<bool(const AccessUnit& unit, std::int64_t ptsNs)>;

  // Starts at once.
  Sharer(const SharingOptions& options, MainLoop& loop, SharedCounts& counts, Sink sink);
  ~Sharer() { endCapture(); }
  Sharer(const Sharer&) = delete;
  Sharer& operator=(const Sharer&) = delete;

  // Makes the next frame a key frame. When the screen is still there is none, so that the last
  // frame is submitted again.
  void requestKeyframe();
  void setBitRate(BitRate bitRate);
  // Captures anew with another limit; the stream goes on.
  void setMaxSize(Size maxSize);
  // Ends the capture, then delivers what is in flight. Throws when a file can't be finished.
  void stop();

 private:
  // What the encoder is used with, by one thread at a time.
  struct Encoding {
    Encoder encoder;
    PixelBuffer lastFrame;
    std::int64_t lastPts = 0;
    std::int64_t capturedPts = 0;  // of the last frame that was not a repetition
    std::int64_t forcedPts = 0;    // of the last frame that was to be a key frame
    BitRate bitRate;
  };

  static void onFrame(void* pixbuf, std::int32_t width, std::int32_t height, std::int64_t ptsNs,
                      void* self);
  static void onEncoded(const std::uint8_t* data, std::int32_t size, bool keyframe,
                        std::int64_t ptsNs, void* self);
  static void onAudio(const float* samples, std::int32_t frames, std::int32_t channels,
                      std::int32_t sampleRate, void* self);

  void startCapture();
  void endCapture();
  void encodeNew(void* pixbuf, Size size, std::int64_t ptsNs);
  void submit(Encoding& encoding, void* pixbuf, std::int64_t ptsNs, bool forceKeyframe);
  void repeatLast(Encoding& encoding, bool forceKeyframe);
  bool isKeyframeMissing(const Encoding& encoding) const;
  void repeatIfLost();
  void sharpenLater();
  void sharpen();

  SharingOptions options_;
  MainLoop& loop_;
  SharedCounts& counts_;
  const Sink sink_;
  TargetWatch watch_;
  std::atomic<std::int64_t> encodedPts_ = 0;
  std::atomic<std::int64_t> keyframePts_ = 0;
  // Access units on end that brought nothing to be seen.
  std::atomic<std::int32_t> quiet_ = 0;
  // Whether sharpen() is due.
  std::atomic<bool> sharpens_ = false;
  Locked<Encoding> encoding_;
  // Of the capture's queue while a capture runs.
  std::optional<WavFile> audio_;
  Capture capture_;
};

}  // namespace vlm::tools
