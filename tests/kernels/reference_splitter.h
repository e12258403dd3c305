#pragma once

#include <vector>

#include "codec/bitstream.h"

namespace vlm::test {

// The splitting rule byte by byte, as it is defined: what the library's faster search must equal.
inline std::vector<codec::NalRange> splitByteByByte(codec::ByteView stream) {
  std::vector<codec::NalRange> units;
  const auto size = static_cast<std::int64_t>(stream.size());
  std::int64_t start = -1;
  std::int64_t i = 0;
  while (i + 3 <= size) {
    const auto* at = stream.data() + i;
    std::int64_t codeSize = 0;
    if (at[0] == 0 && at[1] == 0) {
      if (at[2] == 1) codeSize = 3;
      if (i + 4 <= size && at[2] == 0 && at[3] == 1) codeSize = 4;
    }
    if (codeSize == 0) {
      ++i;
      continue;
    }
    if (start >= 0) units.push_back({start, i - start});
    i += codeSize;
    start = i;
  }
  if (start >= 0 && start < size) units.push_back({start, size - start});
  return units;
}

}  // namespace vlm::test
