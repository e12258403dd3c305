#include "e2e/codec_streams.h"

#include <algorithm>
#include <array>
#include <sstream>
#include <stdexcept>

#include "support/child_process.h"

namespace vlm::test {

std::string ffprobe(const std::string& file, const std::string& entries) {
  return outputOf({"ffprobe", "-v", "error", "-select_streams", "v", "-show_entries", entries,
                   "-of", "csv=p=0", file});
}

Bytes joined(const std::vector<AccessUnit>& units) {
  Bytes stream;
  for (const auto& unit : units) {
    stream.insert(stream.end(), unit.bytes.begin(), unit.bytes.end());
  }
  return stream;
}

std::vector<Bytes> splitAtDelimiters(const Bytes& stream) {
  constexpr std::array<std::uint8_t, 4> kDelimiter{0, 0, 1, 9};
  std::vector<Bytes> units;
  auto start = stream.begin();
  while (start != stream.end()) {
    const auto next = std::search(start + 4, stream.end(), kDelimiter.begin(), kDelimiter.end());
    // A start code of four bytes begins one earlier.
    auto end = next;
    if (next != stream.end() && *(next - 1) == 0) --end;
    units.emplace_back(start, end);
    start = end;
  }
  return units;
}

Bytes testPicture(int width, int height, int step) {
  Bytes pixels(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
  auto* out = pixels.data();
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x, out += 4) {
      // Noise in grey moves sideways over the top, above a still blend of colours.
      auto noise = static_cast<unsigned>((x + step * 3) / 2) * 2654435761U ^
                   static_cast<unsigned>(y / 2) * 2246822519U;
      // Multiples alone nearly repeat themselves every few pixels, and a search finds that.
      noise = (noise ^ noise >> 15) * 2246822519U;
      const bool grey = y < height / 6;
      out[0] = static_cast<std::uint8_t>(grey ? noise >> 24 : x * 255 / width);
      out[1] = static_cast<std::uint8_t>(grey ? noise >> 24 : y * 255 / height);
      out[2] = static_cast<std::uint8_t>(grey ? noise >> 24 : 100);
      out[3] = 255;
    }
  }
  return pixels;
}

void makeClip(const ScratchFolder& folder, const Command& encoder) {
  Command encode{"ffmpeg", "-v", "error"};
  if (encoder.empty()) {
    outputOf({"gst-launch-1.0", "-q", "videotestsrc", "num-buffers=25", "pattern=ball", "!",
              "video/x-raw,format=I420,width=322,height=244", "!", "openh264enc",
              "slice-mode=n-slices", "num-slices=2", "!", "filesink",
              "location=" + folder.file("clip.264")});
    encode.insert(encode.end(), {"-i", folder.file("clip.264"), "-c", "copy"});
  } else {
    encode.insert(encode.end(), {"-f", "lavfi", "-i", "testsrc2=s=322x244:r=25:d=1", "-c:v",
                                 "libx264", "-pix_fmt", "yuv420p"});
    encode.insert(encode.end(), encoder.begin(), encoder.end());
  }
  encode.push_back(folder.file("clip.mp4"));
  outputOf(encode);
}

std::vector<AccessUnit> accessUnitsOf(const ScratchFolder& folder, bool shortStartCodes) {
  outputOf({"ffmpeg", "-v", "error", "-i", folder.file("clip.mp4"), "-c", "copy", "-bsf:v",
            "h264_mp4toannexb,h264_metadata=aud=insert", folder.file("clip.h264")});
  std::istringstream times(ffprobe(folder.file("clip.mp4"), "packet=pts"));
  std::vector<AccessUnit> units;
  for (auto& bytes : splitAtDelimiters(contentsOf<Bytes>(folder.file("clip.h264")))) {
    std::string time;
    std::getline(times, time);
    Bytes stream;
    for (std::size_t i = 0; i < bytes.size(); ++i) {
      const bool longStartCode = i + 3 < bytes.size() && bytes[i] == 0 && bytes[i + 1] == 0 &&
                                 bytes[i + 2] == 0 && bytes[i + 3] == 1;
      if (!shortStartCodes || !longStartCode) stream.push_back(bytes[i]);
    }
    units.push_back({std::move(stream), false, std::stoll(time) * 1000});
  }
  return units;
}

Bytes decodedByFfmpeg(const ScratchFolder& folder) {
  outputOf({"ffmpeg", "-v", "error", "-flags", "unaligned", "-i", folder.file("clip.mp4"), "-f",
            "rawvideo", "-pix_fmt", "nv12", "-vf", "scale=out_range=tv:flags=bilinear",
            folder.file("clip.raw")});
  return contentsOf<Bytes>(folder.file("clip.raw"));
}

Encoder::Encoder(const Options& options) {
  handle_ = vlm_enc_create(options.width, options.height, 30, options.bitrateBps,
                           options.lowLatency, collect, this);
  if (handle_ == nullptr) throw std::runtime_error("no encoder");
}

bool Encoder::encodeBgra(const Bytes& picture, int width, int height, std::int64_t ptsNs,
                         bool forceKeyFrame) {
  return vlm_enc_encode_bgra(handle_, picture.data(), width, height, width * 4, ptsNs,
                             forceKeyFrame);
}

void Encoder::collect(const std::uint8_t* data, std::int32_t size, bool keyFrame,
                      std::int64_t ptsNs, void* user) {
  auto& self = *static_cast<Encoder*>(user);
  std::unique_lock lock(self.mutex_);
  self.units_.push_back({Bytes(data, data + size), keyFrame, ptsNs});
  self.changed_.notify_all();
  self.changed_.wait(lock, [&] { return !self.paused_; });
}

void Encoder::setPaused(bool paused) {
  const std::lock_guard lock(mutex_);
  paused_ = paused;
  changed_.notify_all();
}

void Encoder::waitForUnits(std::size_t count) {
  std::unique_lock lock(mutex_);
  changed_.wait(lock, [&] { return units_.size() >= count; });
}

const std::vector<AccessUnit>& Encoder::finish() {
  vlm_enc_destroy(handle_);
  handle_ = nullptr;
  return units_;
}

Decoder::Decoder(bool bgra)
    : bgra_(bgra),
      handle_(bgra ? vlm_dec_create_bgra(collect, this) : vlm_dec_create(collect, this)) {}

bool Decoder::decode(std::span<const std::uint8_t> unit, std::int64_t ptsNs) {
  return vlm_dec_decode(handle_, unit.data(), static_cast<std::int32_t>(unit.size()), ptsNs);
}

std::vector<Picture> Decoder::pictures() {
  vlm_dec_flush(handle_);
  const std::lock_guard lock(mutex_);
  return pictures_;
}

Bytes packedPlanes(void* pixbuf, int width, int height) {
  std::uint8_t* luma = nullptr;
  std::uint8_t* chroma = nullptr;
  std::int32_t lumaStride = 0;
  std::int32_t chromaStride = 0;
  Bytes pixels;
  if (!vlm_pixbuf_lock(pixbuf, &luma, &lumaStride, &chroma, &chromaStride)) return pixels;
  for (int row = 0; row < height; ++row, luma += lumaStride) {
    pixels.insert(pixels.end(), luma, luma + width);
  }
  for (int row = 0; row < (height + 1) / 2; ++row, chroma += chromaStride) {
    pixels.insert(pixels.end(), chroma, chroma + (width + 1) / 2 * 2);
  }
  vlm_pixbuf_unlock(pixbuf);
  return pixels;
}

void Decoder::collect(void* pixbuf, std::int32_t width, std::int32_t height, std::int64_t ptsNs,
                      void* user) {
  auto& self = *static_cast<Decoder*>(user);
  Picture picture{width, height, ptsNs, {}};
  if (self.bgra_) {
    picture.pixels.resize(static_cast<std::size_t>(width) * static_cast<std::size_t>(height) * 4);
    vlm_pixbuf_to_bgra(pixbuf, picture.pixels.data(),
                       static_cast<std::int32_t>(picture.pixels.size()));
  } else {
    picture.pixels = packedPlanes(pixbuf, width, height);
  }
  const std::lock_guard lock(self.mutex_);
  self.pictures_.push_back(std::move(picture));
}

}  // namespace vlm::test
