#pragma once

#include "platform/core_video.h"

namespace vlm::platform {

// Holds a pixel buffer's memory for reading for a scope.
class ReadLock {
 public:
  explicit ReadLock(CVPixelBuffer& buffer)
      : buffer_(buffer),
        held_(CVPixelBufferLockBaseAddress(buffer, kCVPixelBufferLock_ReadOnly) ==
              kCVReturnSuccess) {}
  ~ReadLock() {
    if (held_) CVPixelBufferUnlockBaseAddress(buffer_, kCVPixelBufferLock_ReadOnly);
  }
  ReadLock(const ReadLock&) = delete;
  ReadLock& operator=(const ReadLock&) = delete;

  // False when the memory can't be had.
  explicit operator bool() const noexcept { return held_; }

 private:
  CVPixelBuffer& buffer_;
  const bool held_;
};

}  // namespace vlm::platform
