#include "codec/bitstream.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "kernels/reference_splitter.h"

namespace vlm::codec {

// Printed by GoogleTest where ranges differ.
static void PrintTo(const NalRange& range, std::ostream* out) {
  *out << "(" << range.offset << ", " << range.length << ")";
}

namespace {

using Ranges = std::vector<NalRange>;
using Sets = std::vector<std::optional<ByteView>>;

const Bytes kSps{0x67, 0x42, 0xC0};
const Bytes kPps{0x68, 0xCE};

Bytes concatenate(std::initializer_list<Bytes> parts) {
  Bytes out;
  for (const auto& part : parts) out.insert(out.end(), part.begin(), part.end());
  return out;
}

Bytes random(std::mt19937& generator, std::size_t size, std::initializer_list<int> alphabet) {
  Bytes bytes(size);
  for (auto& byte : bytes) {
    byte = static_cast<std::uint8_t>(std::data(alphabet)[generator() % alphabet.size()]);
  }
  return bytes;
}

TEST(Bitstream, SplitsAtStartCodesOfBothLengths) {
  const struct {
    Bytes stream;
    Ranges units;
  } cases[] = {
      {{}, {}},
      {{0, 0}, {}},
      {{0x65, 0xAA, 0xBB, 0xCC}, {}},
      {{0, 0, 1}, {}},
      {{0, 0, 0, 1}, {}},
      {{0, 0, 1, 0x65}, {{3, 1}}},
      {{0, 0, 1, 0, 0, 1, 0x65}, {{3, 0}, {6, 1}}},
      {{0, 0, 1, 0x65, 0xAA, 0, 0, 0, 1, 0x41, 0xBB}, {{3, 2}, {9, 2}}},
      {{0, 0, 0, 0, 1, 0x67}, {{5, 1}}},
      {{0, 0, 0, 1, 0x67, 0, 0, 0, 0, 1, 0x68}, {{4, 2}, {10, 1}}},
      {{0xAA, 0xBB, 0, 0, 1, 9, 0x10, 0, 0, 1, 0x65}, {{5, 2}, {10, 1}}},
      {{0, 0, 1, 0x65, 0, 0, 1}, {{3, 1}}},
      {{0, 0, 1, 0x65, 0, 0, 3, 1, 0, 0}, {{3, 7}}},
  };
  for (const auto& c : cases) EXPECT_EQ(c.units, findNalUnits(c.stream));
}

TEST(Bitstream, SplitsAsByteByByteWhateverTheBytesAndLengths) {
  std::mt19937 generator(7);
  const std::initializer_list<int> alphabets[] = {
      {0, 1}, {0, 0, 0, 1}, {0, 1, 3, 0x65}, {0, 0, 3}, {0}, {1}, {0xFF}, {0, 0, 1, 0x80, 0x81}};
  for (std::size_t size = 0; size <= 5000; size += size < 600 ? 1 : 97) {
    for (const auto& alphabet : alphabets) {
      // Exactly as long as it says, so that an address sanitizer sees every read beyond.
      const Bytes stream = random(generator, size, alphabet);
      ASSERT_EQ(test::splitByteByByte(stream), findNalUnits(stream)) << size << " bytes";
    }
  }
}

TEST(Bitstream, WritesParameterSetsOnlyBeforeKeyFramesAndStopsAtBadLengths) {
  const Bytes one{0, 0, 0, 2, 0x65, 0xAA};
  const Bytes two{0, 0, 0, 1, 0x41};
  const Bytes oneOut{0, 0, 0, 1, 0x65, 0xAA};
  const Bytes twoOut{0, 0, 0, 1, 0x41};
  const Bytes code{0, 0, 0, 1};
  const Bytes setsOut = concatenate({code, kSps, code, kPps});
  const Sets both{kSps, kPps};
  const Bytes large(0x10203, 0x41);  // all bytes of its length differ
  const struct {
    const char* what;
    bool keyframe;
    Sets sets;
    Bytes sample, out;
  } cases[] = {
      {"key", true, both, concatenate({one, two}), concatenate({setsOut, oneOut, twoOut})},
      {"not key", false, both, concatenate({one, two}), concatenate({oneOut, twoOut})},
      {"no sets", true, {}, two, twoOut},
      {"unreadable and empty sets",
       true,
       {std::nullopt, ByteView{}, kPps},
       {},
       concatenate({code, code, kPps})},
      {"64 KiB and more",
       false,
       {},
       concatenate({{0, 1, 2, 3}, large, two}),
       concatenate({code, large, twoOut})},
      {"zero length", false, {}, concatenate({one, {0, 0, 0, 0}, two}), oneOut},
      {"overrun by one", false, {}, concatenate({one, {0, 0, 0, 2, 0x41}}), oneOut},
      {"huge length", false, {}, concatenate({one, {0xFF, 0xFF, 0xFF, 0xFF, 0x41}}), oneOut},
      {"short sample", false, both, {0, 0, 0}, {}},
      {"short key sample", true, both, {0, 0, 0}, setsOut},
  };
  for (const auto& c : cases) {
    EXPECT_EQ(c.out, buildAnnexBAccessUnit(c.keyframe, c.sets, c.sample)) << c.what;
  }
}

}  // namespace
}  // namespace vlm::codec
