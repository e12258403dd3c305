#pragma once

#include <optional>
#include <vector>

#include "codec/bitstream.h"
#include "platform/core_media.h"

// What the encoder reads from a sample that the platform has compressed.
namespace vlm::codec {

// Anything but a plain statement that the sample is no sync sample makes it a key frame.
bool isKeyFrame(platform::CMSampleBuffer& sample);

using ParameterSetList = std::vector<std::optional<ByteView>>;

// The parameter sets of the sample's format, nothing for one that can't be read; empty without a
// format. They live as long as the sample.
ParameterSetList parameterSetsOf(const platform::CMSampleBuffer& sample);

// The bytes of a block buffer as one run: in place when the platform hands them over in one piece,
// joined when it does not.
class SampleBytes {
 public:
  // Nothing when the bytes can't be reached. Valid while the block lives.
  static std::optional<SampleBytes> of(const platform::CMBlockBuffer& block);

  ByteView view() const { return joined_.empty() ? piece_ : ByteView(joined_); }

 private:
  ByteView piece_;
  Bytes joined_;
};

}  // namespace vlm::codec
