#pragma once

#include <cstdint>

namespace vlm::bench {

// A small generator with a fixed course.
class Random {
 public:
  explicit Random(std::uint32_t seed) : state_(seed == 0 ? 1 : seed) {}

  std::uint32_t next() {
    state_ ^= state_ << 13;
    state_ ^= state_ >> 17;
    state_ ^= state_ << 5;
    return state_;
  }

 private:
  std::uint32_t state_;
};

}  // namespace vlm::bench
