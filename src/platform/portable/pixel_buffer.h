#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

#include "platform/core_video.h"
#include "platform/portable/change_map.h"
#include "platform/portable/object.h"
#include "platform/portable/plane.h"

namespace vlm::platform {

struct PixelPlane : Plane {
  std::size_t width = 0;  // pixels, or pairs in a chroma plane
  std::size_t height = 0;
};

// How luma and chroma are made from colours.
enum class YCbCrMatrix { bt601, bt709, bt2020 };

// The image in memory behind every pixel buffer handle. A platform derives from it to lend its
// own memory or to refuse locks.
class CVPixelBuffer : public Object {
 public:
  // Over memory that the caller keeps alive; bi-planar when the second plane has a base.
  CVPixelBuffer(std::size_t width, std::size_t height, OSType format,
                std::array<PixelPlane, 2> planes);
  // Null when the size is below 1 or too large, the format can't be laid out, or memory is short.
  static Ref<CVPixelBuffer> make(std::size_t width, std::size_t height, OSType format);

  OSType format() const noexcept { return format_; }
  std::size_t width() const noexcept { return width_; }
  std::size_t height() const noexcept { return height_; }
  // 0 for a chunky buffer, whose one plane is plane(0).
  std::size_t planeCount() const noexcept { return planeCount_; }
  const PixelPlane& plane(std::size_t index) const noexcept { return planes_[index]; }
  // Of a bi-planar buffer.
  Planes planes() const noexcept { return {planes_[0], planes_[1]}; }

  virtual CVReturn lock(CVPixelBufferLockFlags) { return kCVReturnSuccess; }
  virtual CVReturn unlock(CVPixelBufferLockFlags) { return kCVReturnSuccess; }

  // Of no meaning in a picture that is not in YCbCr.
  YCbCrMatrix matrix() const noexcept { return matrix_; }
  void setMatrix(YCbCrMatrix matrix) noexcept { matrix_ = matrix; }

  // What changed since earlier pictures of the same source; null where no account was kept.
  const std::shared_ptr<const ChangeMap>& changes() const noexcept { return changes_; }
  void setChanges(std::shared_ptr<const ChangeMap> changes) { changes_ = std::move(changes); }

 private:
  struct FreeMemory {
    void operator()(std::uint8_t* memory) const noexcept;
  };

  OSType format_;
  std::size_t width_;
  std::size_t height_;
  std::size_t planeCount_;
  std::array<PixelPlane, 2> planes_;
  YCbCrMatrix matrix_ = YCbCrMatrix::bt601;
  std::unique_ptr<std::uint8_t[], FreeMemory> memory_;
  std::shared_ptr<const ChangeMap> changes_;
};

}  // namespace vlm::platform
