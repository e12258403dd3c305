#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <map>
#include <string>
#include <vector>

#include "access_unit_splitter.h"
#include "geometry.h"
#include "latency.h"
#include "values.h"

namespace vlm::tools {
namespace {

using Bytes = std::vector<std::uint8_t>;

// A stream written as one letter a unit: upper case begins a picture (or is no picture at all),
// lower case is a further slice of it. A bar marks the end of an access unit.
Bytes unitOf(char letter, bool longStartCode) {
  static const std::map<char, Bytes> kUnits{{'S', {0x67, 0x4d, 0x00}},
                                            {'P', {0x68, 0xee}},
                                            {'A', {0x09, 0xf0}},
                                            {'E', {0x06, 0x05, 0x80}},
                                            {'X', {0x6e, 0x80}},
                                            {'F', {0x0c, 0xff}},
                                            {'Q', {0x0a}},
                                            {'I', {0x65, 0x88, 0x80}},
                                            {'i', {0x65, 0x42, 0x80}},
                                            {'N', {0x41, 0x9a, 0x10}},
                                            {'n', {0x41, 0x5a, 0x10}},
                                            {'D', {0x22, 0x9a, 0x03}},
                                            {'d', {0x23, 0x80, 0x03}},
                                            {'H', {0x41}}};
  Bytes bytes = longStartCode ? Bytes{0, 0, 0, 1} : Bytes{0, 0, 1};
  const Bytes& unit = kUnits.at(letter);
  bytes.insert(bytes.end(), unit.begin(), unit.end());
  return bytes;
}

std::vector<Bytes> accessUnitsOf(const std::string& letters, bool longStartCodes) {
  std::vector<Bytes> units(1);
  for (const char letter : letters) {
    if (letter == '|') {
      units.emplace_back();
    } else {
      const Bytes unit = unitOf(letter, longStartCodes);
      units.back().insert(units.back().end(), unit.begin(), unit.end());
    }
  }
  return units;
}

Bytes joined(const std::vector<Bytes>& parts) {
  Bytes whole;
  for (const Bytes& part : parts) whole.insert(whole.end(), part.begin(), part.end());
  return whole;
}

bool holdsIdrSlice(const Bytes& unit) {
  return std::find(unit.begin(), unit.end(), 0x65) != unit.end();
}

TEST(AccessUnitSplitter, CutsInFrontOfWhateverBeginsTheNextPicture) {
  for (const char* letters : {"SPI", "SPI|N|N", "SPIiii|Nnn|Nn", "ASPEI|AN|AEN", "SPI|PN|SPI|EN",
                              "I|XN|Dd|Dd", "NF|NQ|SPI", "H", "SPIiH"}) {
    for (const bool longStartCodes : {false, true}) {
      SCOPED_TRACE(std::string(letters) + (longStartCodes ? ", long start codes" : ""));
      const auto expected = accessUnitsOf(letters, longStartCodes);
      const Bytes stream = joined(expected);
      AccessUnitSplitter splitter(stream);
      for (const Bytes& unit : expected) {
        const auto found = splitter.next();
        ASSERT_TRUE(found);
        EXPECT_EQ(Bytes(found->bytes.begin(), found->bytes.end()), unit);
        EXPECT_EQ(found->keyframe, holdsIdrSlice(unit));
      }
      EXPECT_FALSE(splitter.next());
    }
  }
}

TEST(AccessUnitSplitter, LeavesOutWhatHoldsNoPicture) {
  struct Case {
    Bytes stream;
    std::size_t pictures;
  };
  const std::vector<Case> cases{{{}, 0},
                                {{0, 0}, 0},
                                {{0, 0, 1}, 0},
                                {{'h', 'e', 'l', 'l', 'o'}, 0},
                                {joined(accessUnitsOf("SP", true)), 0},
                                {joined({{1, 2, 3}, unitOf('I', true)}), 1},
                                {joined({unitOf('I', true), {0, 0, 0, 1}}), 1},
                                {joined({unitOf('I', true), unitOf('S', true)}), 1}};
  for (const auto& [stream, pictures] : cases) {
    AccessUnitSplitter splitter(stream);
    std::size_t found = 0;
    while (splitter.next()) ++found;
    EXPECT_EQ(found, pictures);
  }
}

template <class Value>
void expectRefused(Value value, const std::vector<std::string>& texts) {
  for (const auto& text : texts) EXPECT_FALSE(lexical_cast(text, value)) << text;
}

TEST(Values, AreReadWholeOrRefused) {
  BitRate rate;
  const std::map<std::string, std::int32_t> rates{{"8M", 8'000'000},
                                                  {"2.5M", 2'500'000},
                                                  {"2500k", 2'500'000},
                                                  {"1", 1},
                                                  {"2147483647", 2147483647}};
  for (const auto& [text, expected] : rates) {
    EXPECT_TRUE(lexical_cast(text, rate) && rate.bitsPerSecond == expected) << text;
  }
  expectRefused(rate, {"2148M", "0", "-1", "8m", "8Mb", "M", "", "nan", "inf"});
  Size size;
  EXPECT_TRUE(lexical_cast("1280x720", size) && size == (Size{1280, 720}));
  expectRefused(size, {"1280x", "x720", "0x720", "1280x720x", "99999999999x1"});
  Placement whole, sized, placed;
  EXPECT_TRUE(lexical_cast("640x360+20+40", whole) && whole.size &&
              whole.position == std::pair(20, 40));
  EXPECT_TRUE(lexical_cast("640x360", sized) && sized.size == (Size{640, 360}) && !sized.position);
  EXPECT_TRUE(lexical_cast("+20+40", placed) && !placed.size && placed.position);
  expectRefused(Placement(), {"+20", "", "640x360+20+40+"});
  BitRateChange change;
  EXPECT_TRUE(lexical_cast("800k@0.5", change) && change.rate.bitsPerSecond == 800'000 &&
              change.seconds == 0.5);
  expectRefused(change, {"2M", "2M@", "2M@-1", "2M@5s"});
}

TEST(Geometry, FitsAPictureInTheMiddleWithoutBendingIt) {
  struct Case {
    Size picture, box;
    Rectangle expected;
  };
  for (const auto& [picture, box, expected] :
       {Case{{1920, 1080}, {960, 540}, {0, 0, {960, 540}}},
        Case{{1920, 1080}, {960, 1000}, {0, 230, {960, 540}}},
        Case{{1080, 1920}, {960, 540}, {328, 0, {304, 540}}},
        Case{{16, 16}, {1, 500}, {0, 249, {1, 1}}}, Case{{4000, 2}, {100, 100}, {0, 49, {100, 1}}},
        Case{{}, {960, 540}, {0, 0, {960, 540}}}}) {
    EXPECT_EQ(fitted(picture, box), expected) << picture.width << " in " << box.width;
  }
}

TEST(Latency, TellsSharesOfWhatWasMeasured) {
  Latency latency;
  EXPECT_EQ(latency.percentileMs(0.5), 0);
  for (int ms = 1; ms <= 100; ++ms) latency.add(std::chrono::milliseconds(ms));
  EXPECT_NEAR(latency.percentileMs(0.5), 50, 0.1);
  EXPECT_NEAR(latency.percentileMs(0.95), 95, 0.1);
  EXPECT_EQ(latency.percentileMs(1), 100);
  latency.add(std::chrono::minutes(1));
  EXPECT_EQ(latency.maxMs(), 60'000);
  EXPECT_EQ(latency.count(), 101U);
}

}  // namespace
}  // namespace vlm::tools
