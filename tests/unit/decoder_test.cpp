#include <gtest/gtest.h>

#include <cstdlib>
#include <utility>

#include "codec/delivery_order.h"
#include "stage.h"

namespace vlm::test {
namespace {

using platform::scripted::ImageOut;

const Bytes kPps{0x68, 0xEE};
const Bytes kSlice{0x65, 0x88};
const Bytes kSei{0x06, 0x05};

// The stand-in for a sequence parameter set that the machine's codec understands.
Bytes sps(uint8_t width = 64, uint8_t height = 48) {
  return {0x67, 0, width, 0, height};
}

Bytes accessUnit(std::initializer_list<Bytes> units) {
  Bytes stream;
  for (const auto& unit : units) {
    stream.insert(stream.end(), {0, 0, 0, 1});
    stream.insert(stream.end(), unit.begin(), unit.end());
  }
  return stream;
}

struct Decoding {
  Machine machine;
  void* handle;
  explicit Decoding(bool bgra = false)
      : handle(bgra ? vlm_dec_create_bgra(noteFrame, &machine)
                    : vlm_dec_create(noteFrame, &machine)) {}
  ~Decoding() { end(); }
  void end() { vlm_dec_destroy(std::exchange(handle, nullptr)); }
  bool decode(std::initializer_list<Bytes> units, int64_t ptsNs = 15) {
    const Bytes stream = accessUnit(units);
    return vlm_dec_decode(handle, stream.data(), static_cast<int32_t>(stream.size()), ptsNs);
  }
  Lines taken() { return machine.journal.take(); }
  Lines after(std::initializer_list<std::string_view> prefixes) {
    machine.run();
    return only(prefixes, machine.journal.take());
  }
};

constexpr const char* kDescribe = "CMVideoFormatDescriptionCreateFromH264ParameterSets([7, 8], 4)";
constexpr const char* kCreate =
    "VTDecompressionSessionCreate({IOSurfaceProperties: {}, MetalCompatibility: true, "
    "PixelFormatType: 875704438})";
constexpr const char* kCreateBgra =
    "VTDecompressionSessionCreate({IOSurfaceProperties: {}, MetalCompatibility: true, "
    "PixelFormatType: 1111970369})";

TEST(Decoder, BuildsItsSessionFromTheStreamAndSubmitsInTheSameCall) {
  for (const bool bgra : {false, true}) {
    Decoding decoding(bgra);
    EXPECT_EQ(decoding.taken(), Lines{});
    EXPECT_TRUE(decoding.decode({sps(), kPps, kSei, kSlice}));
    EXPECT_EQ(
        decoding.after({""}),
        (Lines{kDescribe, bgra ? kCreateBgra : kCreate, "CMBlockBufferCreateWithMemoryBlock(6)",
               "CMSampleBufferCreateReady([0/0 15/1000000000 0/0], [6])",
               "VTDecompressionSessionDecodeFrame(6, 5)",
               bgra ? "frame BGRA 64x48 (64x48) @14" : "frame 420v 64x48 (64x48) @14"}));
  }
}

TEST(Decoder, ParameterSetsMayComeApart) {
  Decoding decoding;
  EXPECT_FALSE(decoding.decode({kSlice}));
  EXPECT_FALSE(decoding.decode({sps()}));
  EXPECT_FALSE(decoding.decode({kSlice}));
  EXPECT_EQ(decoding.taken(), Lines{});
  EXPECT_TRUE(decoding.decode({kPps}));
  EXPECT_EQ(decoding.taken(), (Lines{kDescribe, kCreate}));
  EXPECT_TRUE(decoding.decode({kSei}));
  EXPECT_EQ(decoding.taken(), Lines{});
  EXPECT_TRUE(decoding.decode({kSlice}));
  EXPECT_EQ(decoding.after({"VT", "frame"}),
            (Lines{"VTDecompressionSessionDecodeFrame(6, 5)", "frame 420v 64x48 (64x48) @14"}));
}

TEST(Decoder, OnlyChangedParameterSetsRebuildTheSession) {
  Decoding decoding;
  auto& machine = decoding.machine;
  machine.video.holdsOutput = true;
  decoding.decode({sps(), kPps, kSlice}, 1'000);
  machine.journal.take();
  EXPECT_TRUE(decoding.decode({sps(), kPps, kSlice}, 2'000));
  EXPECT_EQ(decoding.after({"VT"}), Lines{"VTDecompressionSessionDecodeFrame(6, 5)"});
  EXPECT_TRUE(decoding.decode({sps(32, 16), kPps, kSlice}, 3'000));
  // What the old session still had in flight comes late, and is shown.
  EXPECT_EQ(decoding.after({"VT", kDescribe, "frame"}),
            (Lines{"VTDecompressionSessionInvalidate()", kDescribe, kCreate,
                   "VTDecompressionSessionDecodeFrame(6, 5)", "frame 420v 64x48 (64x48) @1000",
                   "frame 420v 64x48 (64x48) @2000"}));
  Bytes longer = sps(32, 16);
  longer.push_back(0x80);
  const Bytes otherPps{0x68, 0xEF};
  for (const auto& sequence : {sps(32, 16), longer}) {
    EXPECT_TRUE(decoding.decode({sequence, otherPps}));
    EXPECT_TRUE(decoding.decode({sequence, otherPps}));
    EXPECT_EQ(decoding.after({"VTDecompressionSessionCreate"}), Lines{kCreate});
  }
  decoding.end();
  for (const auto& session : machine.video.decompressions) {
    EXPECT_TRUE(session->uniquelyReferenced());
  }
}

TEST(Decoder, FailuresAndWhatTheNextAccessUnitDoes) {
  constexpr int kNothing = 1;  // success, and nothing made
  const struct {
    const char* operation;
    int status;
    bool result;
    std::string log;
    bool rebuilds;
  } cases[] = {
      {"CMVideoFormatDescriptionCreateFromH264", -12710, true,
       "[vlm] CMVideoFormatDescriptionCreateFromH264ParameterSets failed: -12710", true},
      {"CMVideoFormatDescriptionCreateFromH264", kNothing, true,
       "[vlm] CMVideoFormatDescriptionCreateFromH264ParameterSets failed: 0", true},
      {"VTDecompressionSessionCreate", -12904, true,
       "[vlm] VTDecompressionSessionCreate failed: -12904", true},
      {"VTDecompressionSessionCreate", kNothing, true,
       "[vlm] VTDecompressionSessionCreate failed: 0", true},
      {"CMBlockBufferCreateWithMemoryBlock", -12700, false, "", false},
      {"CMBlockBufferCreateWithMemoryBlock", kNothing, false, "", false},
      {"CMSampleBufferCreateReady(", -12731, false, "", false},
      {"CMSampleBufferCreateReady(", kNothing, false, "", false},
      {"VTDecompressionSessionDecodeFrame", -12909, false,
       "[vlm] VTDecompressionSessionDecodeFrame failed: -12909", false},
      {"VTDecompressionSessionDecodeFrame", -12903, false,
       "[vlm] VTDecompressionSessionDecodeFrame failed: -12903", true},
  };
  for (const auto& each : cases) {
    SCOPED_TRACE(std::string(each.operation) + " " + std::to_string(each.status));
    Decoding decoding;
    auto& machine = decoding.machine;
    if (each.status == kNothing) {
      machine.answerNothing(each.operation);
    } else {
      machine.refuse(each.operation, each.status);
    }
    EXPECT_EQ(decoding.decode({sps(), kPps, kSlice}), each.result);
    EXPECT_EQ(machine.takeLog(), each.log.empty() ? Lines{} : Lines{each.log});
    EXPECT_TRUE(decoding.decode({kSlice}));
    EXPECT_EQ(
        decoding.after({kDescribe, "VTDecompressionSessionC", "VTDecompressionSessionI", "frame"}),
        each.rebuilds ? (Lines{kDescribe, kCreate, "frame 420v 64x48 (64x48) @14"})
                      : Lines{"frame 420v 64x48 (64x48) @14"});
  }
}

TEST(Decoder, FailedFramesAreLoggedAndDroppedOnesAreNot) {
  Decoding decoding;
  decoding.decode({sps(), kPps});
  decoding.taken();
  for (const auto& [status, log] :
       {std::pair{-12909, Lines{"NSLog([vlm] decode output status -12909)"}},
        std::pair{0, Lines{}}}) {
    decoding.machine.video.decompress = [status = status](const auto&, const auto&) {
      return ImageOut{status, nullptr};
    };
    EXPECT_TRUE(decoding.decode({kSlice}));
    EXPECT_EQ(decoding.after({"NSLog", "frame"}), log);
  }
}

TEST(Decoder, FlushAndDestroyDeliverFirstAndLateFramesFindNobody) {
  for (const bool late : {false, true}) {
    Decoding decoding;
    auto& machine = decoding.machine;
    machine.video.holdsOutput = true;
    vlm_dec_flush(decoding.handle);
    EXPECT_EQ(decoding.taken(), Lines{});
    decoding.decode({sps(), kPps, kSlice}, 1'000);
    vlm_dec_flush(decoding.handle);
    const Lines waited{"VTDecompressionSessionWaitForAsynchronousFrames()",
                       "frame 420v 64x48 (64x48) @1000"};
    EXPECT_EQ(only({"VTDecompressionSessionWait", "frame"}, decoding.taken()), waited);
    decoding.decode({kSlice}, 1'000);
    machine.journal.take();
    if (late) machine.refuse("VTDecompressionSessionWait", -12903);
    decoding.end();
    Lines expected = waited;
    if (late) expected.pop_back();
    expected.push_back("VTDecompressionSessionInvalidate()");
    EXPECT_EQ(decoding.taken(), expected);
    machine.video.decompressions.back()->output.release();
    EXPECT_EQ(decoding.after({"frame", "NSLog"}), Lines{});
  }
}

TEST(Decoder, FramesOfASessionThatNoneFollowsAreWaitedFor) {
  for (const bool ends : {false, true}) {
    Decoding decoding;
    decoding.machine.video.holdsOutput = true;
    decoding.decode({sps(), kPps, kSlice}, 1'000);
    decoding.machine.refuse("VTDecompressionSessionCreate", -12909);
    EXPECT_TRUE(decoding.decode({sps(32, 16), kPps, kSlice}, 2'000));
    decoding.machine.journal.take();
    ends ? decoding.end() : vlm_dec_flush(decoding.handle);
    EXPECT_EQ(only({"frame"}, decoding.taken()), Lines{"frame 420v 64x48 (64x48) @1000"});
  }
}

TEST(Decoder, SessionsThatFinishOutOfOrderDeliverInOrder) {
  // Five places, finished in these turns; a negative one ends without a delivery.
  const struct {
    std::vector<int> turns;
    std::vector<std::vector<int>> delivered;  // after each turn
  } cases[] = {
      {{0, 1, 2, 3, 4}, {{0}, {0, 1}, {0, 1, 2}, {0, 1, 2, 3}, {0, 1, 2, 3, 4}}},
      {{4, 2, 0, 3, 1}, {{}, {}, {0}, {0}, {0, 1, 2, 3, 4}}},
      {{2, -3, 4, 0, -1}, {{}, {}, {}, {0}, {0, 2, 4}}},
  };
  for (const auto& [turns, delivered] : cases) {
    Machine machine;
    const auto order = std::make_shared<codec::DeliveryOrder>();
    std::vector<std::shared_ptr<codec::DeliveryOrder::Place>> places;
    for (std::size_t i = 0; i < turns.size(); ++i) places.push_back(order->append());
    std::vector<int> seen;
    for (std::size_t i = 0; i < turns.size(); ++i) {
      auto& place = places[static_cast<std::size_t>(std::abs(turns[i]))];
      if (turns[i] < 0) {
        place = nullptr;
      } else {
        place->deliver([&seen, number = turns[i]] { seen.push_back(number); });
      }
      EXPECT_EQ(seen, delivered[i]);
    }
    order->wait();
  }
}

}  // namespace
}  // namespace vlm::test
