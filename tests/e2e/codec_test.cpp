// Streams made and read through the boundary, judged by ffmpeg and ffprobe.
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <functional>
#include <map>
#include <sstream>
#include <thread>

#include "e2e/codec_streams.h"
#include "support/child_process.h"

namespace vlm::test {
namespace {

constexpr std::int64_t kFrameNs = 33'333'333;

// The types of a stream's NAL units, all with start codes of four bytes.
std::vector<int> unitTypes(const Bytes& unit) {
  std::vector<int> types;
  for (std::size_t i = 0; i + 4 < unit.size(); ++i) {
    if (unit[i] == 0 && unit[i + 1] == 0 && unit[i + 2] == 0 && unit[i + 3] == 1) {
      types.push_back(unit[i + 4] & 0x1f);
    }
  }
  return types;
}

std::size_t totalSize(std::span<const AccessUnit> units) {
  std::size_t size = 0;
  for (const auto& unit : units) size += unit.bytes.size();
  return size;
}

double psnr(const Bytes& a, const Bytes& b) {
  if (a.size() != b.size()) return 0;
  double squares = 0;
  for (std::size_t i = 0; i < a.size(); ++i) {
    const double difference = static_cast<double>(a[i]) - b[i];
    squares += difference * difference;
  }
  return 10 * std::log10(255.0 * 255.0 * static_cast<double>(a.size()) / squares);
}

// Feeds frames one at a time, so that none is dropped.
void encodePaced(
    Encoder& encoder, const Encoder::Options& options, int first, int count,
    const std::function<bool(int)>& forced = [](int) { return false; }, int stride = 1) {
  for (int i = first; i < first + count; ++i) {
    ASSERT_TRUE(encoder.encodeBgra(testPicture(options.width, options.height, i * stride),
                                   options.width, options.height, i * kFrameNs, forced(i)));
    encoder.waitForUnits(static_cast<std::size_t>(i) + 1);
  }
}

TEST(Codec, StreamIsWhatOtherDecodersExpect) {
  const ScratchFolder folder;
  const Encoder::Options options;
  Encoder encoder(options);
  encodePaced(encoder, options, 0, 60, [](int i) { return i % 25 == 0; });
  const auto& units = encoder.finish();
  for (std::size_t i = 0; i < units.size(); ++i) {
    EXPECT_EQ(units[i].keyFrame, i % 25 == 0) << i;
    const auto expected = i % 25 == 0 ? std::vector{7, 8, 5} : std::vector{1};
    EXPECT_EQ(unitTypes(units[i].bytes), expected) << i;
    EXPECT_NEAR(static_cast<double>(units[i].ptsNs), static_cast<double>(i * kFrameNs), 1);
  }
  writeFile(folder.file("a.h264"), joined(units));
  EXPECT_EQ(ffprobe(folder.file("a.h264"),
                    "stream=profile,width,height,has_b_frames,color_range,color_space"),
            "Main,640,360,0,tv,smpte170m");
  EXPECT_EQ(outputOf({"ffmpeg", "-v", "error", "-xerror", "-i", folder.file("a.h264"), "-f", "null",
                      "-"}),
            "");
  // Nothing may make a decoder wait for a picture that comes later.
  const auto headers =
      outputOf({"ffmpeg", "-hide_banner", "-loglevel", "verbose", "-i", folder.file("a.h264"), "-c",
                "copy", "-bsf:v", "trace_headers", "-f", "null", "-"});
  EXPECT_NE(headers.find("max_num_reorder_frames                                      1 = 0"),
            std::string::npos);
}

TEST(Codec, PicturesComeBackAsTheyWere) {
  const Encoder::Options options{.bitrateBps = 20'000'000};
  Encoder encoder(options);
  encodePaced(encoder, options, 0, 10);
  for (const bool bgra : {false, true}) {
    Decoder decoder(bgra);
    for (const auto& unit : encoder.finish()) EXPECT_TRUE(decoder.decode(unit.bytes, unit.ptsNs));
    const auto pictures = decoder.pictures();
    ASSERT_EQ(pictures.size(), 10U);
    if (!bgra) continue;
    for (int i = 0; i < 10; ++i) {
      const auto& picture = pictures[static_cast<std::size_t>(i)];
      EXPECT_GT(psnr(picture.pixels, testPicture(options.width, options.height, i)), 30) << i;
    }
  }
}

TEST(Codec, BitRateChangesWithoutAKeyFrame) {
  const Encoder::Options options{.bitrateBps = 2'400'000};
  Encoder encoder(options);
  // Too far for a motion search: every picture is noise never seen before.
  constexpr int kStride = 101;
  const auto never = [](int) { return false; };
  encodePaced(encoder, options, 0, 60, never, kStride);
  vlm_enc_set_bitrate(encoder.handle(), 1'200'000);
  for (const int refused : {0, -1}) vlm_enc_set_bitrate(encoder.handle(), refused);
  encodePaced(encoder, options, 60, 90, never, kStride);
  const std::span units(encoder.finish());
  EXPECT_EQ(std::ranges::count(units, true, &AccessUnit::keyFrame), 1);
  // Half a second may pass until the new rate holds.
  const double before = 30.0 / 60 * static_cast<double>(totalSize(units.first(60))) * 8;
  const double after = 30.0 / 75 * static_cast<double>(totalSize(units.last(75))) * 8;
  EXPECT_NEAR(before, 2.4e6, 0.6e6);
  EXPECT_NEAR(after, 1.2e6, 0.3e6);
}

// Bytes of the window of one second that has the most.
std::size_t worstSecond(std::span<const AccessUnit> units) {
  std::size_t worst = 0;
  for (auto first = units.begin(); first != units.end(); ++first) {
    const auto last = std::find_if(first, units.end(), [&](const auto& unit) {
      return unit.ptsNs - first->ptsNs > 999'000'000;
    });
    worst = std::max(worst, totalSize({first, last}));
  }
  return worst;
}

TEST(Codec, RateIsUsedAndKeptAtEveryFrameRateAndAfterAChange) {
  const struct {
    int framesPerSecond;
    int bitsPerSecond;
    int before;          // another rate for two seconds; 0 for none
    double least, most;  // of the rate, in the mean
  } cases[] = {{30, 2'400'000, 0, 0.8, 1.05},
               {30, 1'600'000, 16'000'000, 0.8, 1.1},
               {2, 120'000, 0, 0.8, 1.1},
               {1, 60'000, 0, 0.8, 1.1}};
  for (const auto& test : cases) {
    SCOPED_TRACE(std::to_string(test.framesPerSecond) + " frames, " +
                 std::to_string(test.bitsPerSecond));
    const Encoder::Options options{.bitrateBps =
                                       test.before > 0 ? test.before : test.bitsPerSecond};
    Encoder encoder(options);
    const int lead = test.before > 0 ? 2 * test.framesPerSecond : 0;
    const int count = lead + std::max(4 * test.framesPerSecond, 12);
    for (int i = 0; i < count; ++i) {
      if (i == lead) vlm_enc_set_bitrate(encoder.handle(), test.bitsPerSecond);
      encoder.encodeBgra(testPicture(options.width, options.height, i * 101), options.width,
                         options.height, i * 1'000'000'000LL / test.framesPerSecond, false);
      encoder.waitForUnits(static_cast<std::size_t>(i) + 1);
    }
    const auto units = std::span(encoder.finish()).subspan(static_cast<std::size_t>(lead));
    EXPECT_LE(static_cast<double>(worstSecond(units)) * 8, 1.25 * test.bitsPerSecond);
    const auto settled = units.subspan(units.size() / 4);
    const double rate = static_cast<double>(totalSize(settled)) * 8 * test.framesPerSecond /
                        static_cast<double>(settled.size());
    EXPECT_GE(rate, test.least * test.bitsPerSecond);
    EXPECT_LE(rate, test.most * test.bitsPerSecond);
  }
}

TEST(Codec, StillPictureIsRefinedInPartsUntilNothingIsLeft) {
  const Encoder::Options options{.bitrateBps = 400'000, .lowLatency = true};
  Encoder encoder(options);
  encodePaced(
      encoder, options, 0, 150, [](int) { return false; }, 0);
  const auto& units = encoder.finish();
  constexpr std::size_t kTwoFrames = 400'000 / 8 / 30 * 2;
  Decoder decoder(true);
  for (std::size_t i = 0; i < units.size(); ++i) {
    // The first one is as coarse as is allowed and still larger.
    const std::size_t most = i == 0 ? 1'000'000 : i < 140 ? kTwoFrames : 100;
    EXPECT_LE(units[i].bytes.size(), most) << i;
    EXPECT_TRUE(decoder.decode(units[i].bytes, units[i].ptsNs));
  }
  const auto wanted = testPicture(options.width, options.height, 0);
  const auto pictures = decoder.pictures();
  EXPECT_LT(psnr(pictures.front().pixels, wanted), 36);
  EXPECT_GT(psnr(pictures.back().pixels, wanted), 40);
}

TEST(Codec, LevelAllowsForTheBitRate) {
  const ScratchFolder folder;
  const std::pair<int, std::string> cases[] = {{4'000'000, "30"}, {28'700'000, "41"}};
  for (const auto& [rate, level] : cases) {
    const Encoder::Options options{.bitrateBps = rate};
    Encoder encoder(options);
    encodePaced(encoder, options, 0, 1);
    writeFile(folder.file("a.h264"), joined(encoder.finish()));
    EXPECT_EQ(ffprobe(folder.file("a.h264"), "stream=level"), level);
  }
}

TEST(Codec, NewSizeBeginsAStreamOfItsOwn) {
  const Encoder::Options first{.width = 640, .height = 360};
  const Encoder::Options second{.width = 321, .height = 243};
  Encoder encoder(first);
  encodePaced(encoder, first, 0, 5);
  encodePaced(encoder, second, 5, 5);
  Decoder decoder(true);
  for (const auto& unit : encoder.finish()) {
    EXPECT_EQ(unit.keyFrame, unit.ptsNs / kFrameNs % 5 == 0);
    EXPECT_TRUE(decoder.decode(unit.bytes, unit.ptsNs));
  }
  const auto pictures = decoder.pictures();
  ASSERT_EQ(pictures.size(), 10U);
  for (std::size_t i = 0; i < 10; ++i) {
    // Odd sizes, which the format does not have, are extended by a column and a row.
    EXPECT_EQ(pictures[i].width, i < 5 ? 640 : 322);
    EXPECT_EQ(pictures[i].height, i < 5 ? 360 : 244);
  }
}

struct ForeignStream {
  const char* name;
  Command encoder;  // arguments of ffmpeg for libx264; none for OpenH264
  bool shortStartCodes = false;
};

const ForeignStream kForeignStreams[] = {
    {"Baseline", {"-profile:v", "baseline"}, true},
    {"Reordered", {"-profile:v", "high", "-bf", "3", "-refs", "4"}},
    {"Sliced", {"-profile:v", "main", "-x264-params", "slices=5:weightp=2"}},
    {"Interlaced", {"-flags", "+ildct+ilme", "-x264-params", "tff=1:bframes=2"}},
    {"OpenGroups", {"-x264-params", "open-gop=1:keyint=8:bframes=2"}, true},
    {"AllChroma", {"-profile:v", "high444", "-pix_fmt", "yuv444p"}},
    {"DeepColour", {"-profile:v", "high422", "-pix_fmt", "yuv422p10le"}},
    {"FullRange", {"-pix_fmt", "yuvj420p"}},
    {"DeepFullRange", {"-profile:v", "high10", "-pix_fmt", "yuv420p10le", "-color_range", "pc"}},
    {"Cropped", {"-x264-params", "crop-rect=32,16,2,2:bframes=0"}},
    {"CroppedReordered", {"-x264-params", "crop-rect=32,16,2,2:bframes=2"}},
    {"OpenH264", {}},
};

TEST(Codec, ForeignStreamsComeOutAsFfmpegDecodesThem) {
  for (const auto& foreign : kForeignStreams) {
    SCOPED_TRACE(foreign.name);
    const ScratchFolder folder;
    makeClip(folder, foreign.encoder);
    const Bytes expected = decodedByFfmpeg(folder);
    Decoder decoder(false);
    std::size_t submitted = 0;
    for (const auto& unit : accessUnitsOf(folder, foreign.shortStartCodes)) {
      ASSERT_TRUE(decoder.decode(unit.bytes, unit.ptsNs));
      // Each at once, whatever the order of display.
      ASSERT_EQ(decoder.pictures().size(), ++submitted);
    }
    auto pictures = decoder.pictures();
    std::ranges::stable_sort(pictures, {}, &Picture::ptsNs);
    Bytes shown;
    for (const auto& picture : pictures) {
      shown.insert(shown.end(), picture.pixels.begin(), picture.pixels.end());
    }
    EXPECT_EQ(pictures.size(), 25U);
    EXPECT_TRUE(shown == expected);
  }
}

std::size_t threadsOfThisProcess() {
  const std::filesystem::directory_iterator threads("/proc/self/task");
  return static_cast<std::size_t>(std::distance(begin(threads), end(threads)));
}

// A sender may change its parameter sets with every picture: that must cost no thread each.
TEST(Codec, StreamsThatChangeAllTheTimeStayInOrderAndBounded) {
  Encoder encoder({});
  encodePaced(encoder, {}, 0, 1);
  const auto unit = encoder.finish().front().bytes;
  const Bytes sliceStart{0, 0, 1, 0x65};
  const auto slice = std::search(unit.begin(), unit.end(), sliceStart.begin(), sliceStart.end());
  ASSERT_NE(slice, unit.end());
  Bytes other = unit;
  other.insert(other.begin() + (slice - unit.begin()), {1, 0});  // behind the picture set
  std::vector<std::int64_t> times;
  const auto note = [](void*, std::int32_t, std::int32_t, std::int64_t ptsNs, void* seen) {
    std::this_thread::sleep_for(std::chrono::milliseconds(5));
    static_cast<std::vector<std::int64_t>*>(seen)->push_back(ptsNs);
  };
  void* const decoder = vlm_dec_create(note, &times);
  const auto before = threadsOfThisProcess();
  constexpr std::int64_t kUnits = 60;
  for (std::int64_t i = 0; i < kUnits; ++i) {
    const auto& next = i % 2 == 0 ? unit : other;
    EXPECT_TRUE(
        vlm_dec_decode(decoder, next.data(), static_cast<std::int32_t>(next.size()), i * 1000));
  }
  EXPECT_LE(threadsOfThisProcess(), before + 1);
  vlm_dec_destroy(decoder);
  ASSERT_EQ(times.size(), kUnits);
  EXPECT_TRUE(std::ranges::is_sorted(times));
}

struct Damage {
  const char* name;
  std::function<void(Bytes&)> apply;
};

const Damage kDamages[] = {
    {"cut short", [](Bytes& unit) { unit.resize(unit.size() / 2); }},
    {"nothing left but a header", [](Bytes& unit) { unit.resize(6); }},
    {"noise inside",
     [](Bytes& unit) {
       for (std::size_t i = unit.size() / 3; i < unit.size() / 3 + 40; ++i) unit[i] ^= 0x5a;
     }},
    {"noise from start to end",
     [](Bytes& unit) {
       for (std::size_t i = 5; i < unit.size(); ++i) unit[i] = static_cast<std::uint8_t>(i * 71);
     }},
    {"lost", [](Bytes& unit) { unit.clear(); }},
};

TEST(Codec, DamageIsNeverShownAndKeyFramesHeal) {
  constexpr int kCount = 24;
  constexpr int kKeyInterval = 12;
  const Encoder::Options options{.width = 320, .height = 240};
  Encoder encoder(options);
  encodePaced(encoder, options, 0, kCount, [](int i) { return i % kKeyInterval == 0; });
  const auto sound = encoder.finish();
  for (const auto& damage : kDamages) {
    for (const std::size_t position : {0U, 5U}) {
      SCOPED_TRACE(damage.name);
      SCOPED_TRACE(position);
      auto units = sound;
      damage.apply(units[position].bytes);
      Decoder decoder(true);
      for (const auto& unit : units) decoder.decode(unit.bytes, unit.ptsNs);
      std::map<std::int64_t, Picture> pictures;
      for (auto& picture : decoder.pictures()) {
        pictures[(picture.ptsNs + 1) / kFrameNs] = std::move(picture);
      }
      // Everything before the damage and from the next key frame on, and nothing spoilt between.
      for (int i = 0; i < kCount; ++i) {
        const bool affected = i >= static_cast<int>(position) && i < kKeyInterval;
        EXPECT_TRUE(affected || pictures.contains(i)) << i;
      }
      for (const auto& [i, picture] : pictures) {
        const auto original = testPicture(options.width, options.height, static_cast<int>(i));
        EXPECT_GT(psnr(picture.pixels, original), 25) << i;
      }
    }
  }
}

TEST(Codec, AnEncoderThatCantKeepUpDropsTheOldestFrames) {
  const Encoder::Options options;
  Encoder encoder(options);
  encodePaced(encoder, options, 0, 2);
  encoder.setPaused(true);
  // One is taken and held up in its callback; of the others three can wait.
  for (int i = 2; i < 12; ++i) {
    encoder.encodeBgra(testPicture(options.width, options.height, i), options.width, options.height,
                       i * kFrameNs, i == 5);
    if (i == 2) encoder.waitForUnits(3);
  }
  encoder.setPaused(false);
  const auto& units = encoder.finish();
  ASSERT_EQ(units.size(), 6U);
  // The newest is what a screen that falls still goes on showing, so it is never the one to go;
  // and who asked for a key frame gets one with the next frame that is taken.
  EXPECT_NEAR(static_cast<double>(units[5].ptsNs), 11.0 * kFrameNs, 1);
  EXPECT_NEAR(static_cast<double>(units[3].ptsNs), 9.0 * kFrameNs, 1);
  EXPECT_TRUE(units[3].keyFrame);
  EXPECT_FALSE(units[4].keyFrame);
}

}  // namespace
}  // namespace vlm::test
