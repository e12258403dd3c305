#include <gtest/gtest.h>

#include <algorithm>
#include <functional>
#include <numeric>
#include <utility>

#include "stage.h"

namespace vlm::test {
namespace {

using platform::CMBlockBuffer;
using platform::CMSampleBuffer;
using platform::CMTimeMake;
using platform::makeRef;
using platform::scripted::FrameIn;
using platform::scripted::makeCompressedSample;
using platform::scripted::SampleOut;

// An encoder for 64 x 48 frames on its own machine.
struct Encoding {
  Machine machine;
  void* handle = nullptr;
  explicit Encoding(int32_t fps = 30) {
    handle = vlm_enc_create(64, 48, fps, 4'000'000, false, noteEncoded, &machine);
  }
  ~Encoding() { end(); }
  void end() { vlm_enc_destroy(std::exchange(handle, nullptr)); }
  bool encode(int64_t ptsNs = 15, std::size_t width = 64, std::size_t height = 48,
              bool force = false) {
    return vlm_enc_encode(handle, picture(width, height).get(), ptsNs, force);
  }
  // What one frame leads to: the lines that begin with the prefixes.
  Lines after(std::initializer_list<std::string_view> prefixes) {
    machine.run();
    return only(prefixes, machine.journal.take());
  }
};

Lines operator+(Lines a, const Lines& b) {
  a.insert(a.end(), b.begin(), b.end());
  return a;
}

TEST(Encoder, SessionIsConfiguredInOrder) {
  Machine machine;
  for (const bool lowLatency : {false, true}) {
    void* handle = vlm_enc_create(1920, 1080, 30, 4'000'000, lowLatency, noteEncoded, &machine);
    const std::string encoder = lowLatency ? "{EnableLowLatencyRateControl: true}" : "null";
    EXPECT_EQ(machine.journal.take("VT"),
              (Lines{"VTCompressionSessionCreate(1920, 1080, avc1, " + encoder + ")",
                     "VTSessionSetProperty(RealTime, true)",
                     "VTSessionSetProperty(AllowFrameReordering, false)",
                     "VTSessionSetProperty(ProfileLevel, H264_Main_AutoLevel)",
                     "VTSessionSetProperty(ExpectedFrameRate, 30)",
                     "VTSessionSetProperty(MaxKeyFrameInterval, 30000)",
                     "VTSessionSetProperty(MaxKeyFrameIntervalDuration, 600)",
                     "VTSessionSetProperty(MaxAllowedFrameQP, 42)",
                     "VTSessionSetProperty(AverageBitRate, 4000000)",
                     "VTSessionSetProperty(DataRateLimits, [625000.0, 1.0])",
                     "VTCompressionSessionPrepareToEncodeFrames()"}));
    vlm_enc_destroy(handle);
    machine.journal.take();
  }
}

TEST(Encoder, CreationFailsWithoutASession) {
  Machine machine;
  machine.answerNothing("VTCompressionSessionCreate");
  EXPECT_EQ(vlm_enc_create(64, 48, 30, 1, false, noteEncoded, nullptr), nullptr);
  EXPECT_EQ(machine.takeLog(), Lines{"[vlm] VTCompressionSessionCreate failed: 0"});
}

TEST(Encoder, RefusedPropertiesDoNotStopIt) {
  Machine machine;
  machine.refuse("VTSessionSetProperty(ExpectedFrameRate", -12900);
  machine.refuse("VTSessionSetProperty(AverageBitRate", -12900, 2);
  machine.refuse("VTSessionSetProperty(DataRateLimits", -12900, 2);
  void* handle = vlm_enc_create(64, 48, 0, 1, false, noteEncoded, &machine);
  ASSERT_NE(handle, nullptr);
  EXPECT_EQ(machine.takeLog(),
            Lines{"[vlm] VTSessionSetProperty ExpectedFrameRate failed: -12900"});
  vlm_enc_set_bitrate(handle, 8'000'000);
  EXPECT_EQ(machine.journal.take(),
            (Lines{"VTSessionSetProperty(AverageBitRate, 8000000)",
                   "VTSessionSetProperty(DataRateLimits, [1250000.0, 1.0])"}));
  vlm_enc_destroy(handle);
}

TEST(Encoder, FramesAreSubmittedWithTimeDurationAndOptions) {
  const struct {
    int32_t fps;
    bool force;
    const char* arguments;
  } cases[] = {{30, false, "15/1000000000, 1/30, null"},
               {0, true, "15/1000000000, 1/1, {ForceKeyFrame: true}"},
               {-7, false, "15/1000000000, 1/1, null"}};
  for (const auto& each : cases) {
    Encoding encoding(each.fps);
    encoding.machine.journal.take();
    EXPECT_TRUE(encoding.encode(15, 64, 48, each.force));
    EXPECT_EQ(
        encoding.after({"VT"}),
        Lines{std::string("VTCompressionSessionEncodeFrame(420v 64x48, ") + each.arguments + ")"});
  }
}

TEST(Encoder, KeyFramesCarryTheirParameterSets) {
  Encoding encoding;
  encoding.encode(0);
  encoding.encode(15);
  encoding.encode(1'000'000'000, 64, 48, true);
  encoding.encode(-15);
  EXPECT_EQ(encoding.after({"encoded"}),
            (Lines{"encoded key @0: 67 68 65", "encoded @14: 41",
                   "encoded key @1000000000: 67 68 65", "encoded @-14: 41"}));
  // The pixels are let go of when the frame is out.
  const auto frame = picture(64, 48);
  vlm_enc_encode(encoding.handle, frame.get(), 1, false);
  EXPECT_FALSE(frame->uniquelyReferenced());
  encoding.machine.run();
  EXPECT_TRUE(frame->uniquelyReferenced());
}

// What the platform may hand over for one frame that was submitted at 15 ns, and what becomes of
// it.
struct OddOutput {
  const char* name;
  bool keyframe;
  std::function<void(CMSampleBuffer&)> change;
  Lines expected;
  const char* refused = nullptr;
};

std::vector<OddOutput> oddOutputs() {
  const auto attached = [](CFValue attachments) {
    return [attachments](CMSampleBuffer& sample) { sample.attachments = attachments; };
  };
  const auto bytes = [](std::vector<CMBlockBuffer::Piece> pieces) {
    return [pieces](CMSampleBuffer& sample) { sample.data = makeRef<CMBlockBuffer>(pieces); };
  };
  const CFDictionary notSync{{"NotSync", true}};
  const Lines none;
  const Lines plain{"encoded @14: 41"};
  const Lines key{"encoded key @14: 67 68 41"};
  return {
      {"not a sync sample", false, attached(CFArray{notSync}), plain},
      {"no attachments", false, [](CMSampleBuffer& sample) { sample.attachments.reset(); }, key},
      {"empty array", false, attached(CFArray{}), key},
      {"a number", false, attached(CFArray{CFDictionary{{"NotSync", 1}}}), key},
      {"no array", false, attached(notSync), key},
      {"second entry", false, attached(CFArray{CFDictionary{}, notSync}), key},
      {"several pieces",
       false,
       bytes({{0, 0}, {0, 2, 0x41}, {0x88}, {0, 0, 0, 1, 0x06}}),
       {"encoded @14: 41 06"}},
      {"second piece out of reach", false, bytes({{0, 0, 0, 2, 0x41}, {0x88}}), none,
       "CMBlockBufferGetDataPointer(5"},
      {"out of reach", true, {}, none, "CMBlockBufferGetDataPointer(0"},
      {"no block", true, [](CMSampleBuffer& sample) { sample.data = nullptr; }, none},
      {"no bytes in a key frame", true, bytes({{}}), none},
      {"unreadable set",
       true,
       [](CMSampleBuffer& sample) { sample.description->parameterSets[0].reset(); },
       {"encoded key @14: 68 65"}},
      {"refused set",
       true,
       {},
       {"encoded key @14: 67 65"},
       "CMVideoFormatDescriptionGetH264ParameterSetAtIndex(1"},
      {"no description",
       true,
       [](CMSampleBuffer& sample) { sample.description = nullptr; },
       {"encoded key @14: 65"}},
  };
}

TEST(Encoder, OddOutputs) {
  for (const auto& each : oddOutputs()) {
    SCOPED_TRACE(each.name);
    Encoding encoding;
    encoding.machine.video.compress = [&](FrameIn frame) {
      frame.keyframe = each.keyframe;
      auto sample = makeCompressedSample(frame);
      if (each.change) each.change(*sample);
      return SampleOut{platform::noErr, sample};
    };
    if (each.refused != nullptr) encoding.machine.refuse(each.refused, -12704);
    EXPECT_TRUE(encoding.encode());
    EXPECT_EQ(encoding.after({"encoded", "NSLog"}), each.expected);
  }
}

TEST(Encoder, FailuresOfFramesLeaveTheSessionInPlace) {
  Encoding encoding;
  encoding.encode();
  encoding.after({});
  encoding.machine.refuse("VTCompressionSessionEncodeFrame", -12903);
  EXPECT_FALSE(encoding.encode());
  EXPECT_EQ(encoding.after({"NSLog", "VTCompressionSessionCreate"}),
            Lines{"NSLog([vlm] VTCompressionSessionEncodeFrame failed: -12903)"});
  encoding.machine.video.compress = [](const FrameIn&) { return SampleOut{-12912, nullptr}; };
  EXPECT_TRUE(encoding.encode());
  EXPECT_EQ(encoding.after({"NSLog", "encoded"}),
            Lines{"NSLog([vlm] encode output status -12912)"});
  encoding.machine.video.compress = [](const FrameIn&) { return SampleOut{}; };
  EXPECT_TRUE(encoding.encode());
  EXPECT_EQ(encoding.after({"NSLog", "encoded", "VTCompressionSessionCreate"}), Lines{});
}

TEST(Encoder, AnotherSizeRebuildsAfterDeliveringWhatIsInFlight) {
  Encoding encoding;
  auto& machine = encoding.machine;
  Lines build = machine.journal.take("VT");
  build[0] = "VTCompressionSessionCreate(32, 16, avc1, null)";
  machine.video.holdsOutput = true;
  encoding.encode(1'000);
  machine.journal.take();
  EXPECT_TRUE(encoding.encode(2'000, 32, 16));
  EXPECT_EQ(
      encoding.after({"VT", "NSLog", "encoded"}),
      (Lines{"NSLog([vlm] encoder input resized 64x48 → 32x16; rebuilding VT session)",
             "VTCompressionSessionCompleteFrames(0/0)", "encoded key @1000: 67 68 65",
             "VTCompressionSessionInvalidate()"} +
       build + Lines{"VTCompressionSessionEncodeFrame(420v 32x16, 2000/1000000000, 1/30, null)"}));
  EXPECT_TRUE(machine.video.compressions.front()->uniquelyReferenced());
  encoding.end();
  EXPECT_EQ(encoding.after({"encoded"}), Lines{"encoded key @2000: 67 68 65"});
}

TEST(Encoder, AFailedRebuildIsTriedAgainOnlyForAnotherSize) {
  Encoding encoding;
  auto& machine = encoding.machine;
  machine.refuse("VTCompressionSessionCreate(32", -12904);
  EXPECT_FALSE(encoding.encode(1, 32, 16));
  EXPECT_EQ(machine.takeLog(),
            (Lines{"[vlm] encoder input resized 64x48 → 32x16; rebuilding VT session",
                   "[vlm] VTCompressionSessionCreate failed: -12904"}));
  EXPECT_FALSE(encoding.encode(2, 32, 16));
  vlm_enc_set_bitrate(encoding.handle, 8'000'000);
  EXPECT_EQ(machine.journal.take(), Lines{});
  EXPECT_TRUE(encoding.encode(3, 32, 18));
  EXPECT_EQ(encoding.after({"NSLog", "VTCompressionSessionC", "VTSessionSetProperty(A"}),
            (Lines{"NSLog([vlm] encoder input resized 32x16 → 32x18; rebuilding VT session)",
                   "VTCompressionSessionCreate(32, 18, avc1, null)",
                   "VTSessionSetProperty(AllowFrameReordering, false)",
                   "VTSessionSetProperty(AverageBitRate, 8000000)"}));
}

TEST(Encoder, DestroyDeliversFirstAndLateFramesFindNobody) {
  for (const bool late : {false, true}) {
    Encoding encoding;
    auto& machine = encoding.machine;
    machine.video.holdsOutput = true;
    encoding.encode(1'000);
    encoding.encode(2'000);
    machine.journal.take();
    if (late) machine.refuse("VTCompressionSessionCompleteFrames", -12903);
    encoding.end();
    const Lines delivered{"encoded key @1000: 67 68 65", "encoded @2000: 41"};
    EXPECT_EQ(only({"VT", "encoded"}, machine.journal.take()),
              Lines{"VTCompressionSessionCompleteFrames(0/0)"} + (late ? Lines{} : delivered) +
                  Lines{"VTCompressionSessionInvalidate()"});
    machine.video.compressions.back()->output.release();
    EXPECT_EQ(encoding.after({"encoded", "NSLog"}), Lines{});
  }
}

TEST(Encoder, CopiesPackedRowsWithoutTheirPadding) {
  Ref<CVPixelBuffer> image;
  Encoding encoding;
  auto& machine = encoding.machine;
  machine.video.compress = [&](const FrameIn& frame) {
    image = frame.image;
    return platform::scripted::compressFrame(frame);
  };
  machine.journal.take();
  constexpr int32_t kRow = 64 * 4, kStride = kRow + 16;
  Bytes source(47 * kStride + kRow);  // the padding of the last row is not there
  std::iota(source.begin(), source.end(), uint8_t{0});
  const Bytes before = source;
  const auto encode = [&](int32_t width, int32_t height) {
    return vlm_enc_encode_bgra(encoding.handle, source.data(), width, height, kStride, 15, true);
  };
  EXPECT_TRUE(encode(64, 48));
  std::ranges::fill(source, uint8_t{0});
  EXPECT_EQ(encoding.after({"CV", "VT", "encoded"}),
            (Lines{"CVPixelBufferCreate(64, 48, BGRA, {IOSurfaceProperties: {}})",
                   "VTCompressionSessionEncodeFrame(BGRA 64x48, 15/1000000000, 1/30, "
                   "{ForceKeyFrame: true})",
                   "encoded key @14: 67 68 65"}));
  ASSERT_TRUE(image);
  for (std::size_t row = 0; row < 48; ++row) {
    EXPECT_TRUE(std::equal(
        before.begin() + row * kStride, before.begin() + row * kStride + kRow,
        CVPixelBufferGetBaseAddress(*image) + row * CVPixelBufferGetBytesPerRow(*image)));
  }
  EXPECT_TRUE(image->uniquelyReferenced());

  machine.refuse("CVPixelBufferCreate", -6662);
  EXPECT_FALSE(encode(64, 48));
  machine.answerNothing("CVPixelBufferCreate");
  EXPECT_FALSE(encode(64, 48));
  EXPECT_EQ(encoding.after({"VT", "NSLog"}), Lines{});
  // Another size goes the way of every frame.
  EXPECT_TRUE(encode(4, 3));
  EXPECT_EQ(machine.takeLog(),
            Lines{"[vlm] encoder input resized 64x48 → 4x3; rebuilding VT session"});
  std::iota(source.begin(), source.end(), uint8_t{7});
  EXPECT_TRUE(encode(4, 1));
  machine.run();
  EXPECT_TRUE(std::equal(source.begin(), source.begin() + 16, CVPixelBufferGetBaseAddress(*image)))
      << "one row";
}

}  // namespace
}  // namespace vlm::test
