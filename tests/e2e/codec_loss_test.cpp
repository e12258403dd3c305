// Streams of which something is missing, by accident or on purpose, judged by what ffmpeg makes of
// the whole stream.
#include <gtest/gtest.h>

#include <algorithm>
#include <map>
#include <set>
#include <sstream>

#include "e2e/codec_streams.h"

namespace vlm::test {
namespace {

const Bytes kStartCode{0, 0, 0, 1};
constexpr std::size_t kPictureBytes = 322 * 244 * 3 / 2;

// The NAL units of an access unit, with their start codes.
std::vector<Bytes> unitsOf(const Bytes& accessUnit) {
  std::vector<Bytes> units;
  auto start = accessUnit.begin();
  while (start != accessUnit.end()) {
    auto end = std::search(start + 4, accessUnit.end(), kStartCode.begin() + 1, kStartCode.end());
    if (end != accessUnit.end() && *(end - 1) == 0) --end;
    units.emplace_back(start, end);
    start = end;
  }
  return units;
}

int typeOf(const Bytes& unit) {
  return unit[unit[2] == 1 ? 3 : 4] & 0x1f;
}
bool isSlice(const Bytes& unit) {
  return typeOf(unit) == 1 || typeOf(unit) == 5;
}

// The access unit without its slice of this number.
Bytes withoutSlice(const Bytes& accessUnit, int number) {
  Bytes left;
  for (const auto& unit : unitsOf(accessUnit)) {
    if (!isSlice(unit) || number-- != 0) left.insert(left.end(), unit.begin(), unit.end());
  }
  return left;
}

// What is shown of the access units from `first` on, by time.
std::map<std::int64_t, Bytes> shownOf(const std::vector<AccessUnit>& units, std::size_t first = 0) {
  Decoder decoder(false);
  for (std::size_t i = first; i < units.size(); ++i) decoder.decode(units[i].bytes, units[i].ptsNs);
  std::map<std::int64_t, Bytes> shown;
  for (auto& picture : decoder.pictures()) {
    // A time may come back one nanosecond early.
    shown[(picture.ptsNs + 1) / 1000 * 1000] = std::move(picture.pixels);
  }
  return shown;
}

// Every picture of the whole stream by time.
std::map<std::int64_t, Bytes> wholeOf(const ScratchFolder& folder,
                                      const std::vector<AccessUnit>& units) {
  const Bytes raw = decodedByFfmpeg(folder);
  std::set<std::int64_t> times;
  for (const auto& unit : units) times.insert(unit.ptsNs);
  std::map<std::int64_t, Bytes> pictures;
  auto at = raw.begin();
  for (const auto time : times) {
    pictures[time] = Bytes(at, at + kPictureBytes);
    at += kPictureBytes;
  }
  return pictures;
}

TEST(CodecLoss, ALostSliceIsNotShownNorWhatNeedsIt) {
  constexpr std::size_t kDamaged = 4;
  constexpr std::size_t kKeyFrame = 12;
  for (const char* pictures : {"bframes=0", "bframes=2"}) {
    const ScratchFolder folder;
    makeClip(folder, {"-g", "12", "-x264-params",
                      std::string("slices=4:scenecut=0:open-gop=0:") + pictures});
    const auto sound = accessUnitsOf(folder);
    const auto whole = wholeOf(folder, sound);
    for (const int slice : {0, 1, 3}) {
      SCOPED_TRACE(pictures + std::string(", slice ") + std::to_string(slice));
      auto units = sound;
      units[kDamaged].bytes = withoutSlice(units[kDamaged].bytes, slice);
      const auto shown = shownOf(units);
      for (std::size_t i = 0; i < units.size(); ++i) {
        const bool expected = i < kDamaged || i >= kKeyFrame;
        EXPECT_EQ(shown.contains(units[i].ptsNs), expected) << i;
        EXPECT_TRUE(!expected || shown.at(units[i].ptsNs) == whole.at(units[i].ptsNs)) << i;
      }
    }
  }
}

TEST(CodecLoss, AStreamJoinedInItsMiddleIsShownFromItsNextIntraPicture) {
  const ScratchFolder folder;
  makeClip(folder, {"-x264-params", "open-gop=1:keyint=8:bframes=2:b-adapt=0:scenecut=0"});
  const auto units = accessUnitsOf(folder);
  const auto whole = wholeOf(folder, units);
  // The next intra picture carries a recovery point message.
  std::size_t intra = 3;
  const auto hasMessage = [](const Bytes& unit) { return typeOf(unit) == 6; };
  while (std::ranges::none_of(unitsOf(units[intra].bytes), hasMessage)) ++intra;
  Bytes sets;
  for (const auto& unit : unitsOf(units[0].bytes)) {
    if (typeOf(unit) == 7 || typeOf(unit) == 8) sets.insert(sets.end(), unit.begin(), unit.end());
  }
  auto joined = units;
  joined[2].bytes = sets;
  const auto shown = shownOf(joined, 2);
  for (std::size_t i = 3; i < units.size(); ++i) {
    // Those shown before the intra picture come behind it in the stream.
    const bool expected = i >= intra && units[i].ptsNs >= units[intra].ptsNs;
    EXPECT_EQ(shown.contains(units[i].ptsNs), expected) << i;
    EXPECT_TRUE(!expected || shown.at(units[i].ptsNs) == whole.at(units[i].ptsNs)) << i;
  }
}

// Sets the flag by which a sequence parameter set allows for pictures that are left out. For the
// sets of this library's encoder, whose numbers before the flag are all codes of Main profile.
void allowGaps(Bytes& unit) {
  std::size_t bit = 0;
  const auto next = [&] { return unit[8 + bit / 8] >> (7 - bit % 8) & 1; };
  const auto skipCode = [&] {
    unsigned zeros = 0;
    for (; next() == 0; ++bit) ++zeros;
    unsigned value = 0;
    for (unsigned i = 0; i <= zeros; ++i, ++bit) value = value << 1 | static_cast<unsigned>(next());
    return value - 1;
  };
  skipCode();                       // the set's number
  skipCode();                       // the length of frame numbers
  if (skipCode() == 0) skipCode();  // the kind of picture order
  skipCode();                       // reference pictures
  unit[8 + bit / 8] |= static_cast<std::uint8_t>(0x80 >> bit % 8);
}

TEST(CodecLoss, PicturesLeftOutOnPurposeStopNothing) {
  Encoder encoder({.width = 320, .height = 240});
  const auto picture = testPicture(320, 240, 0);
  for (int i = 0; i < 10; ++i) {
    ASSERT_TRUE(encoder.encodeBgra(picture, 320, 240, i * 1000, false));
    encoder.waitForUnits(static_cast<std::size_t>(i) + 1);
  }
  const auto units = encoder.finish();
  for (const bool allowed : {true, false}) {
    Decoder decoder(false);
    for (std::size_t i = 0; i < units.size(); i += 2) {
      Bytes bytes;
      for (auto unit : unitsOf(units[i].bytes)) {
        if (typeOf(unit) == 7 && allowed) allowGaps(unit);
        bytes.insert(bytes.end(), unit.begin(), unit.end());
      }
      decoder.decode(bytes, units[i].ptsNs);
    }
    EXPECT_EQ(decoder.pictures().size(), allowed ? 5U : 1U);
  }
}

TEST(CodecLoss, EachLineAboutAStreamIsOurs) {
  // Main profile, 1,200 by 2,000 blocks.
  const Bytes huge{0, 0, 0, 1, 0x67, 0x4d, 0x40, 0x1f, 0xda, 0x00, 0x12, 0xc0, 0x00, 0xfa, 0x19};
  const Bytes pictureSet{0, 0, 0, 1, 0x68, 0xce, 0x3c, 0x80, 0, 0, 0, 1, 0x65, 0x88, 0x84, 0x21};
  Bytes unit = huge;
  unit.insert(unit.end(), pictureSet.begin(), pictureSet.end());
  testing::internal::CaptureStderr();
  Decoder decoder(true);
  decoder.decode(unit, 0);
  EXPECT_TRUE(decoder.pictures().empty());
  std::istringstream lines(testing::internal::GetCapturedStderr());
  int count = 0;
  for (std::string line; std::getline(lines, line); ++count) {
    EXPECT_EQ(line.rfind("[vlm] ", 0), 0U) << line;
  }
  EXPECT_GT(count, 0);
}

}  // namespace
}  // namespace vlm::test
