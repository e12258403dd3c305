#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

namespace vlm::platform::h264 {

// Reads the payload of a NAL unit bit by bit, without the bytes that keep start codes out of it.
// Behind the end there are zeros, and the reader says so.
class BitReader {
 public:
  explicit BitReader(std::span<const std::uint8_t> payload) : payload_(payload) {}

  bool isPastEnd() const noexcept { return pastEnd_; }

  std::uint32_t bits(unsigned count) noexcept {
    std::uint32_t value = 0;
    while (count-- > 0) value = value << 1 | bit();
    return value;
  }
  bool flag() noexcept { return bit() != 0; }

  // ue(v) and se(v) of the standard.
  std::uint32_t unsignedCode() noexcept {
    unsigned zeros = 0;
    while (zeros < 32 && !pastEnd_ && bit() == 0) ++zeros;
    if (zeros >= 32) pastEnd_ = true;  // no code of H.264 is so long
    return pastEnd_ ? 0 : (1U << zeros) - 1 + bits(zeros);
  }
  std::int32_t signedCode() noexcept {
    const std::uint32_t code = unsignedCode();
    const auto half = static_cast<std::int32_t>(code / 2 + code % 2);
    return code % 2 != 0 ? half : -half;
  }

 private:
  std::uint32_t bit() noexcept {
    if (left_ == 0 && !nextByte()) return 0;
    return static_cast<std::uint32_t>(byte_ >> --left_ & 1);
  }

  bool nextByte() noexcept {
    if (zeros_ >= 2 && at_ < payload_.size() && payload_[at_] == 3) {
      ++at_;
      zeros_ = 0;
    }
    if (at_ >= payload_.size()) {
      pastEnd_ = true;
      return false;
    }
    byte_ = payload_[at_++];
    zeros_ = byte_ == 0 ? zeros_ + 1 : 0;
    left_ = 8;
    return true;
  }

  const std::span<const std::uint8_t> payload_;
  std::size_t at_ = 0;
  unsigned zeros_ = 0;  // bytes of zero before at_
  unsigned left_ = 0;   // bits of byte_ that were not read
  std::uint8_t byte_ = 0;
  bool pastEnd_ = false;
};

}  // namespace vlm::platform::h264
