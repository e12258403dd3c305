#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

namespace vlm::platform {

// An account of when each 16 x 16 block of a picture last changed, so that code that works on
// successive pictures of one source can leave alone what stayed as it was. Pictures of a source
// are numbered from 1; a consumer that last saw picture n need only look at blocks whose entry is
// above n. It stays right when pictures in between were skipped.
struct ChangeMap {
  static constexpr std::size_t kBlockSize = 16;

  std::uint64_t source = 0;   // identifies the source within the process
  std::uint64_t picture = 0;  // the number of this picture
  std::size_t columns = 0;    // blocks in a row: width / 16 rounded up
  std::size_t rows = 0;
  std::vector<std::uint64_t> lastChange;  // rows x columns; the picture that last changed a block

  bool unchangedSince(std::uint64_t earlierPicture, std::size_t block) const {
    return lastChange[block] <= earlierPicture;
  }
};

}  // namespace vlm::platform
