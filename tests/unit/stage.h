#pragma once

#include <algorithm>
#include <initializer_list>
#include <string>
#include <string_view>
#include <vector>

#include "VelmoraMacNative.h"
#include "codec/bitstream.h"
#include "platform/portable/media.h"
#include "platform/scripted/machine/machine.h"

// What the tests of the families share: callbacks that note what reached the host in the machine's
// journal, beside what reached the platform, so that one list shows the order of both.
namespace vlm::test {

using codec::Bytes;
using platform::CFArray;
using platform::CFDictionary;
using platform::CFValue;
using platform::CVPixelBuffer;
using platform::Ref;
using platform::scripted::Machine;
using Lines = std::vector<std::string>;

// The lines that begin with one of the prefixes.
inline Lines only(std::initializer_list<std::string_view> prefixes, Lines lines) {
  std::erase_if(lines, [&](const auto& line) {
    return std::ranges::none_of(prefixes, [&](auto prefix) { return line.starts_with(prefix); });
  });
  return lines;
}

// vlm_frame_cb: "frame 420v 64x48 (64x48) @14": the buffer, the reported size, the time stamp.
inline void noteFrame(void* pixbuf, int32_t width, int32_t height, int64_t ptsNs, void* user) {
  const auto size = std::to_string(width) + "x" + std::to_string(height);
  static_cast<Machine*>(user)->journal.note(
      "frame " + platform::scripted::describe(*static_cast<CVPixelBuffer*>(pixbuf)) + " (" + size +
      ") @" + std::to_string(ptsNs));
}

// vlm_encoded_cb: "encoded key @14: 67 68 65": the header byte of each NAL unit.
inline void noteEncoded(const uint8_t* data, int32_t size, bool keyframe, int64_t ptsNs,
                        void* user) {
  const codec::ByteView bytes(data, static_cast<std::size_t>(size));
  std::string line = keyframe ? "encoded key @" : "encoded @";
  line += std::to_string(ptsNs) + ":";
  for (const auto& range : codec::findNalUnits(bytes)) {
    constexpr std::string_view kDigits = "0123456789ABCDEF";
    const auto header = bytes[static_cast<std::size_t>(range.offset)];
    line += {' ', kDigits[header >> 4], kDigits[header & 15]};
  }
  static_cast<Machine*>(user)->journal.note(std::move(line));
}

inline Ref<CVPixelBuffer> picture(
    std::size_t width, std::size_t height,
    platform::OSType format = platform::kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange) {
  return CVPixelBuffer::make(width, height, format);
}

}  // namespace vlm::test
