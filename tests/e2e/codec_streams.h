#pragma once

#include <condition_variable>
#include <cstdint>
#include <mutex>
#include <span>
#include <string>
#include <vector>

#include "VelmoraMacNative.h"
#include "support/scratch_folder.h"

// Both directions of the codec through the boundary, and the pictures and files that go through.
namespace vlm::test {

using Bytes = std::vector<std::uint8_t>;

struct AccessUnit {
  Bytes bytes;
  bool keyFrame = false;
  std::int64_t ptsNs = 0;
};

Bytes joined(const std::vector<AccessUnit>& units);
// The access units of a stream in which each begins with a delimiter.
std::vector<Bytes> splitAtDelimiters(const Bytes& stream);

// Packed BGRA of soft shapes and hard-edged noise that move with `step`.
Bytes testPicture(int width, int height, int step);

using Command = std::vector<std::string>;

std::string ffprobe(const std::string& file, const std::string& entries);
// Makes clip.mp4 with 25 pictures of 322 by 244, by ffmpeg's libx264 with these arguments; by
// OpenH264 without any.
void makeClip(const ScratchFolder& folder, const Command& encoder);
// The access units of clip.mp4, with delimiters and times.
std::vector<AccessUnit> accessUnitsOf(const ScratchFolder& folder, bool shortStartCodes = false);
// The pictures of clip.mp4 in order of time, packed NV12 in video range.
Bytes decodedByFfmpeg(const ScratchFolder& folder);

class Encoder {
 public:
  struct Options {
    int width = 640;
    int height = 360;
    int bitrateBps = 4'000'000;
    bool lowLatency = false;
  };

  explicit Encoder(const Options& options);
  ~Encoder() { finish(); }

  void* handle() { return handle_; }
  bool encodeBgra(const Bytes& picture, int width, int height, std::int64_t ptsNs,
                  bool forceKeyFrame);
  // While it is paused, the callback waits inside its next call.
  void setPaused(bool paused);
  // Waits until so many access units have come.
  void waitForUnits(std::size_t count);
  // Ends the encoder; everything that came.
  const std::vector<AccessUnit>& finish();

 private:
  static void collect(const std::uint8_t* data, std::int32_t size, bool keyFrame,
                      std::int64_t ptsNs, void* user);

  void* handle_ = nullptr;
  std::mutex mutex_;
  std::condition_variable changed_;
  bool paused_ = false;
  std::vector<AccessUnit> units_;
};

struct Picture {
  int width = 0;
  int height = 0;
  std::int64_t ptsNs = 0;
  Bytes pixels;  // packed NV12 or BGRA
};

// The planes of a pixel buffer without the padding of their rows.
Bytes packedPlanes(void* pixbuf, int width, int height);

class Decoder {
 public:
  explicit Decoder(bool bgra);
  ~Decoder() { vlm_dec_destroy(handle_); }

  bool decode(std::span<const std::uint8_t> unit, std::int64_t ptsNs);
  // Everything that came for what was submitted so far, in the order in which it came.
  std::vector<Picture> pictures();

 private:
  static void collect(void* pixbuf, std::int32_t width, std::int32_t height, std::int64_t ptsNs,
                      void* user);

  const bool bgra_;
  void* handle_;
  std::mutex mutex_;
  std::vector<Picture> pictures_;
};

}  // namespace vlm::test
