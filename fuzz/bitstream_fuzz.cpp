// Any bytes split like the byte-by-byte loop splits them, and what the writer makes of the reader's
// sample is split into the same units again.
#include <cstdint>
#include <cstdlib>

#include "codec/bitstream.h"
#include "kernels/reference_splitter.h"

namespace {

using namespace vlm::codec;

void require(bool condition) {
  if (!condition) std::abort();
}

void checkRoundTrip(ByteView stream, const std::vector<NalRange>& units) {
  ParameterSets held;
  const auto sample = buildLengthPrefixedSample(stream, units, held);
  const auto rewritten = buildAnnexBAccessUnit(false, {}, sample.bytes);
  ParameterSets none;
  const auto again = buildLengthPrefixedSample(rewritten, findNalUnits(rewritten), none);
  require(!again.changed && !none.sps && !none.pps);
  require(again.bytes == sample.bytes);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  const ByteView stream(data, size);
  const auto units = findNalUnits(stream);
  require(units == vlm::test::splitByteByByte(stream));
  checkRoundTrip(stream, units);
  return 0;
}
