#include "present/presenter.h"

#include <gtest/gtest.h>

#include <utility>

#include "stage.h"

namespace vlm::test {
namespace {

using Status = platform::AVQueuedSampleBufferRenderingStatus;
using platform::scripted::ScriptedLayer;

struct Presenting {
  Machine machine;
  void* handle = nullptr;
  explicit Presenting(bool onMainThread = true) {
    machine.setOnMainThread(onMainThread);
    handle = vlm_present_create();
    machine.display.viewBounds = {{0, 0}, {8, 6}};
  }
  ~Presenting() { end(); }
  void end() { vlm_present_destroy(std::exchange(handle, nullptr)); }
  int32_t enqueue(int64_t ptsNs = 0) {
    const auto frame = picture(16, 16);
    return vlm_present_enqueue(handle, frame.get(), ptsNs);
  }
  // The number of hand-overs that answered BUSY.
  int busy(int times) {
    int count = 0;
    for (int i = 0; i < times; ++i) count += enqueue() == VLM_PRESENT_BUSY ? 1 : 0;
    return count;
  }
  void become(const ScriptedLayer::Condition& condition) {
    machine.display.layers.back()->become(condition);
  }
  void fail() { become({.status = Status::failed}); }
  platform::NSView& view() { return *static_cast<platform::NSView*>(vlm_present_view(handle)); }
  Lines taken() { return machine.journal.take(); }
  Lines afterRun() {
    machine.run();
    return taken();
  }
};

TEST(Presenter, MakesItsViewOnTheMainThread) {
  for (const bool onMainThread : {true, false}) {
    Presenting presenting(onMainThread);
    EXPECT_EQ(presenting.taken(),
              (Lines{"AVSampleBufferDisplayLayer()", "NSView initWithFrame((0.0, 0.0, 0.0, 0.0))",
                     "layer1 setVideoGravity(AVLayerVideoGravityResize)",
                     "layer1 setBackgroundColor(0.0, 0.0, 0.0, 1.0)", "NSView setLayer(layer1)",
                     "NSView setWantsLayer(true)"}));
    EXPECT_EQ(presenting.view().hitTest({1, 1}), nullptr);
    presenting.machine.setOnMainThread(true);
  }
  for (const char* operation : {"AVSampleBufferDisplayLayer", "NSView initWithFrame"}) {
    Machine machine;
    machine.answerNothing(operation);
    EXPECT_EQ(vlm_present_create(), nullptr);
  }
}

TEST(Presenter, WrapsFramesToBeShownAtOnce) {
  Presenting presenting;
  presenting.taken();
  const auto frame = picture(16, 16);
  for (const int64_t ptsNs : {0, 5'000'000}) {
    EXPECT_EQ(vlm_present_enqueue(presenting.handle, frame.get(), ptsNs), VLM_PRESENT_OK);
    EXPECT_EQ(presenting.taken(),
              (Lines{"CMVideoFormatDescriptionCreateForImageBuffer(420v 16x16)",
                     "CMSampleBufferCreateReadyWithImageBuffer(0/0 0/0 0/0)",
                     "layer1 enqueueSampleBuffer([{DisplayImmediately: true}])"}));
  }
  EXPECT_EQ(presenting.machine.display.layers.front()->shown()->image, frame);
  EXPECT_EQ(vlm_present_enqueue(presenting.handle, nullptr, 0), VLM_PRESENT_ARG);
  EXPECT_EQ(vlm_present_enqueue(nullptr, frame.get(), 0), VLM_PRESENT_ARG);
  EXPECT_EQ(presenting.taken(), Lines{});
}

TEST(Presenter, AnswersTheConditionOfTheLayer) {
  Presenting presenting;
  presenting.taken();
  presenting.become({.status = Status::failed, .requiresFlush = true});
  EXPECT_EQ(presenting.enqueue(), VLM_PRESENT_BUSY);
  EXPECT_EQ(presenting.taken(), Lines{"layer1 flush()"});
  presenting.become({.ready = false});
  EXPECT_EQ(presenting.enqueue(), VLM_PRESENT_BUSY);
  EXPECT_EQ(presenting.taken(), Lines{});
  presenting.become({.afterEnqueue = Status::failed});
  EXPECT_EQ(presenting.enqueue(), VLM_PRESENT_BUSY);
  EXPECT_EQ(presenting.taken().size(), 3U);
  presenting.become({});
  for (const char* operation : {"CMVideoFormatDescriptionCreateForImageBuffer",
                                "CMSampleBufferCreateReadyWithImageBuffer"}) {
    presenting.machine.refuse(operation, -12731);
    EXPECT_EQ(presenting.enqueue(), VLM_PRESENT_FAIL);
    presenting.machine.answerNothing(operation);
    EXPECT_EQ(presenting.enqueue(), VLM_PRESENT_FAIL);
  }
  EXPECT_EQ(only({"NSLog", "layer1"}, presenting.taken()), Lines{});
  EXPECT_EQ(presenting.enqueue(), VLM_PRESENT_OK);
}

TEST(Presenter, SixtyOneFailuresInARowReplaceTheLayerOnce) {
  Presenting presenting;
  presenting.fail();
  presenting.taken();
  EXPECT_EQ(presenting.busy(60), 60);
  EXPECT_EQ(presenting.afterRun(), Lines(60, "layer1 flush()"));
  EXPECT_EQ(presenting.busy(70), 70);
  EXPECT_EQ(presenting.taken(), Lines(70, "layer1 flush()"));
  EXPECT_EQ(
      presenting.afterRun(),
      (Lines{"AVSampleBufferDisplayLayer()", "layer2 setVideoGravity(AVLayerVideoGravityResize)",
             "layer2 setBackgroundColor(0.0, 0.0, 0.0, 1.0)", "NSView setLayer(layer2)",
             "NSView setWantsLayer(true)", "layer2 setContentsScale(2.0)",
             "layer2 setFrame((0.0, 0.0, 8.0, 6.0))",
             "NSLog([vlm] display layer was unrecoverable — rebuilt it)"}));
  // The count starts again.
  presenting.fail();
  presenting.busy(60);
  EXPECT_EQ(presenting.afterRun(), Lines(60, "layer2 flush()"));
  presenting.busy(1);
  EXPECT_EQ(presenting.afterRun().back(),
            "NSLog([vlm] display layer was unrecoverable — rebuilt it)");
}

TEST(Presenter, OneHealthyLookStartsTheCountAgainAndAFlushDoesNot) {
  Presenting presenting;
  presenting.fail();
  presenting.busy(60);
  presenting.become({.ready = false});
  presenting.busy(1);
  presenting.fail();
  presenting.busy(60);
  presenting.become({.requiresFlush = true});
  presenting.busy(1);
  presenting.machine.run();
  EXPECT_EQ(presenting.machine.display.layers.size(), 1U);
  presenting.fail();
  presenting.busy(1);
  presenting.machine.run();
  EXPECT_EQ(presenting.machine.display.layers.size(), 2U);
  // A rebuild that is due when the presenter ends finds none.
  presenting.fail();
  presenting.busy(61);
  presenting.end();
  presenting.machine.run();
  EXPECT_EQ(presenting.machine.display.layers.size(), 2U);
}

TEST(Presenter, ALayerThatCannotBeReplacedIsTriedAgain) {
  Presenting presenting;
  presenting.fail();
  presenting.machine.throwFrom("NSView setLayer");
  presenting.busy(61);
  presenting.machine.run();
  EXPECT_EQ(presenting.machine.takeLog(), Lines{});
  presenting.fail();
  presenting.busy(61);
  presenting.machine.run();
  EXPECT_EQ(presenting.machine.takeLog(),
            Lines{"[vlm] display layer was unrecoverable — rebuilt it"});
}

TEST(Presenter, LayerFollowsTheScaleOfWindowOrScreen) {
  Presenting presenting;
  presenting.taken();
  const struct {
    std::optional<double> window, screen;
    Lines written;
  } cases[] = {{std::nullopt, std::nullopt, {"layer1 setContentsScale(2.0)"}},
               {2, 1, {}},
               {3, 1, {"layer1 setContentsScale(3.0)"}},
               {std::nullopt, 1.5, {"layer1 setContentsScale(1.5)"}},
               {1.5, std::nullopt, {}}};
  bool moved = false;
  for (const auto& each : cases) {
    presenting.machine.display.windowScale = each.window;
    presenting.machine.display.mainScreenScale = each.screen;
    moved = !moved;
    moved ? presenting.view().viewDidMoveToWindow()
          : presenting.view().viewDidChangeBackingProperties();
    Lines expected = each.written;
    expected.insert(expected.begin(), moved ? "NSView viewDidMoveToWindow()"
                                            : "NSView viewDidChangeBackingProperties()");
    EXPECT_EQ(presenting.taken(), expected);
  }
}

TEST(Presenter, ClearAndDestroyActOnTheMainThread) {
  {
    Presenting presenting;
    presenting.taken();
    vlm_present_clear(presenting.handle);
    EXPECT_EQ(presenting.taken(), Lines{"layer1 flushAndRemoveImage()"});
    presenting.end();
    EXPECT_EQ(presenting.taken(),
              (Lines{"layer1 flushAndRemoveImage()", "NSView removeFromSuperview()"}));
  }
  Presenting presenting;
  presenting.fail();
  presenting.machine.setOnMainThread(false);
  presenting.busy(61);
  presenting.taken();
  // The rebuild is due first: a clear means the layer of its own time, an end the layer of then.
  vlm_present_clear(presenting.handle);
  EXPECT_EQ(presenting.taken(), Lines{});
  presenting.machine.run();
  EXPECT_EQ(presenting.taken().back(), "layer1 flushAndRemoveImage()");
  presenting.fail();
  presenting.busy(61);
  const auto presenter = present::VlmPresenter::borrow(presenting.handle);
  presenting.end();
  EXPECT_EQ(only({"NSView"}, presenting.taken()), Lines{});
  presenting.machine.run();
  const auto lines = presenting.taken();
  ASSERT_GE(lines.size(), 2U);
  EXPECT_EQ(lines[lines.size() - 2], "layer3 flushAndRemoveImage()");
  EXPECT_EQ(lines.back(), "NSView removeFromSuperview()");
}

}  // namespace
}  // namespace vlm::test
