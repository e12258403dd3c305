#pragma once

#include <memory>
#include <string>

#include "platform/linux/media/libav.h"

struct AVFormatContext;

namespace vlm::platform::media {

// libavformat's functions for reading a file. They are loaded with the first file that is opened:
// the library brings thirty others, and most hosts play no sound files.
struct LibavformatFunctions;

// A file with sound in it. Everything but the packets of the sound is left out.
class SoundContainer {
 public:
  // False for a file that holds no sound that can be decoded, or when libavformat is missing.
  bool open(const std::string& path);

  // Ready for the packets of the sound; null when it can't be made.
  AVCodecContextPtr makeDecoder() const;
  // The next packet of the sound; false at the end of the file.
  bool read(AVPacket& packet);

 private:
  struct Close {
    const LibavformatFunctions* functions;
    void operator()(AVFormatContext* format) const noexcept;
  };

  std::unique_ptr<AVFormatContext, Close> format_;
  const AVCodec* decoder_ = nullptr;
  int index_ = -1;
};

}  // namespace vlm::platform::media
