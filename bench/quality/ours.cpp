#include <algorithm>
#include <condition_variable>
#include <cstring>
#include <mutex>
#include <stdexcept>

#include "VelmoraMacNative.h"
#include "bench/quality/encoders.h"
#include "platform/portable/pixel_buffer.h"

namespace vlm::bench {
namespace {

using platform::ChangeMap;
using platform::CVPixelBuffer;

constexpr std::size_t kBlock = ChangeMap::kBlockSize;
// A host stops to submit a still picture when so little has come for two seconds.
constexpr std::size_t kNothing = 500;
constexpr int kPatience = 2 * Content::kFramesPerSecond;

bool blockDiffers(const Picture& a, const Picture& b, std::size_t x, std::size_t y) {
  const auto width = std::min(kBlock, a.width - x);
  for (std::size_t row = y; row < std::min(y + kBlock, a.height); ++row) {
    const auto at = row * a.width + x;
    if (std::memcmp(a.luma() + at, b.luma() + at, width) != 0) return true;
    const auto chroma = row / 2 * a.width + x;
    if (std::memcmp(a.chroma() + chroma, b.chroma() + chroma, width) != 0) return true;
  }
  return false;
}

class Ours final : public QualityEncoder {
 public:
  explicit Ours(const EncoderSettings& settings)
      : before_(settings.width, settings.height),
        handle_(vlm_enc_create(static_cast<std::int32_t>(settings.width),
                               static_cast<std::int32_t>(settings.height), settings.fps,
                               settings.bitsPerSecond, settings.lowLatency, onEncoded, this)) {
    if (handle_ == nullptr) throw std::runtime_error("no encoder");
    changes_.source = 1;
    changes_.columns = (settings.width + kBlock - 1) / kBlock;
    changes_.rows = (settings.height + kBlock - 1) / kBlock;
    changes_.lastChange.assign(changes_.columns * changes_.rows, 1);
  }
  ~Ours() override { vlm_enc_destroy(handle_); }

  // As a capture would, with an account of what changed.
  void take(const Picture& picture) override {
    ++changes_.picture;
    for (std::size_t block = 0; block < changes_.lastChange.size(); ++block) {
      const auto x = block % changes_.columns * kBlock;
      const auto y = block / changes_.columns * kBlock;
      if (changes_.picture == 1 || blockDiffers(picture, before_, x, y)) {
        changes_.lastChange[block] = changes_.picture;
      }
    }
    before_ = picture;
    quiet_ = 0;
    buffer_ = CVPixelBuffer::make(picture.width, picture.height,
                                  platform::kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange);
    if (!buffer_) throw std::runtime_error("no pixel buffer");
    copyPlane(picture.luma(), picture.width, buffer_->plane(0), picture.height);
    copyPlane(picture.chroma(), picture.width, buffer_->plane(1), picture.height / 2);
    buffer_->setChanges(std::make_shared<const ChangeMap>(changes_));
  }

  Bytes encode(bool repeated, std::int64_t ptsNs) override {
    unit_.clear();
    done_ = false;
    if (!vlm_enc_encode(handle_, buffer_.get(), ptsNs, false)) {
      throw std::runtime_error("a frame was refused");
    }
    std::unique_lock lock(mutex_);
    if (!changed_.wait_for(lock, std::chrono::seconds(10), [this] { return done_; })) {
      throw std::runtime_error("an access unit is missing");
    }
    quiet_ = repeated && unit_.size() < kNothing ? quiet_ + 1 : 0;
    return unit_;
  }
  void setBitRate(int bitsPerSecond) override { vlm_enc_set_bitrate(handle_, bitsPerSecond); }
  bool wantsRepeats() const override { return quiet_ < kPatience; }

 private:
  static void copyPlane(const std::uint8_t* from, std::size_t width, const platform::PixelPlane& to,
                        std::size_t rows) {
    for (std::size_t row = 0; row < rows; ++row) {
      std::memcpy(to.row(row), from + row * width, width);
    }
  }

  static void onEncoded(const std::uint8_t* data, std::int32_t size, bool, std::int64_t,
                        void* user) {
    auto& self = *static_cast<Ours*>(user);
    const std::lock_guard lock(self.mutex_);
    self.unit_.assign(data, data + size);
    self.done_ = true;
    self.changed_.notify_all();
  }

  ChangeMap changes_;
  Picture before_;
  platform::Ref<CVPixelBuffer> buffer_;
  int quiet_ = 0;

  std::mutex mutex_;
  std::condition_variable changed_;
  Bytes unit_;
  bool done_ = false;

  void* handle_;
};

}  // namespace

std::unique_ptr<QualityEncoder> makeOurs(const EncoderSettings& settings) {
  return std::make_unique<Ours>(settings);
}

}  // namespace vlm::bench
