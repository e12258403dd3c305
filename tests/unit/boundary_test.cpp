#include <gtest/gtest.h>

#include <functional>

#include "capture/stream.h"
#include "codec/decoder.h"
#include "codec/encoder.h"
#include "present/presenter.h"
#include "stage.h"

namespace vlm::test {
namespace {

const Bytes kAccessUnit{0, 0, 1, 0x67, 0, 64, 0, 48, 0, 0, 1, 0x68, 0xEE, 0, 0, 1, 0x65, 0x88};

struct Objects {
  Machine machine;
  void* capture;
  void* encoder;
  void* decoder;
  void* presenter;
  Objects() {
    machine.screen.addDisplay(1, {{0, 0}, {64, 48}});
    capture = vlm_capture_start_display(0, 30, 0, 0, noteFrame, nullptr, &machine);
    encoder = vlm_enc_create(64, 48, 30, 1, false, noteEncoded, &machine);
    decoder = vlm_dec_create(noteFrame, &machine);
    presenter = vlm_present_create();
  }
  void end() {
    vlm_capture_stop(capture);
    vlm_enc_destroy(encoder);
    vlm_dec_destroy(decoder);
    vlm_present_destroy(presenter);
  }
};

TEST(Boundary, AnEndingCallEndsItsObject) {
  Objects objects;
  const std::weak_ptr<void> alive[] = {
      capture::VlmCapture::borrow(objects.capture), codec::VlmEncoder::borrow(objects.encoder),
      codec::VlmDecoder::borrow(objects.decoder), present::VlmPresenter::borrow(objects.presenter)};
  const auto frame = picture(64, 48);
  vlm_enc_encode(objects.encoder, frame.get(), 0, false);
  vlm_dec_decode(objects.decoder, kAccessUnit.data(), static_cast<int32_t>(kAccessUnit.size()), 0);
  vlm_present_enqueue(objects.presenter, frame.get(), 0);
  for (const auto& object : alive) EXPECT_FALSE(object.expired());
  objects.end();
  for (const auto& object : alive) EXPECT_TRUE(object.expired());
  // The layer alone still shows the frame.
  EXPECT_EQ(objects.machine.display.layers.front()->shown()->image, frame);
  objects.machine.display.layers.clear();
  EXPECT_TRUE(frame->uniquelyReferenced());
}

// Each operation of the platform that throws, as it does when memory is short, and the call that
// meets it: the call answers failure, and the library goes on.
TEST(Boundary, NothingIsThrown) {
  const auto frame = picture(64, 48);
  using Call = std::function<bool(Objects&)>;
  const Call decode = [](Objects& o) {
    return vlm_dec_decode(o.decoder, kAccessUnit.data(), static_cast<int32_t>(kAccessUnit.size()),
                          0);
  };
  const Call encode = [&](Objects& o) { return vlm_enc_encode(o.encoder, frame.get(), 0, false); };
  const Call start = [](Objects& o) {
    return vlm_capture_start_display(0, 30, 0, 0, noteFrame, nullptr, &o.machine) != nullptr;
  };
  const Call present = [&](Objects& o) {
    return vlm_present_enqueue(o.presenter, frame.get(), 0) != VLM_PRESENT_FAIL;
  };
  const std::pair<const char*, Call> cases[] = {
      {"getShareableContent", [](Objects&) { return vlm_screen_capture_ready(); }},
      {"dispatch_queue_create", start},
      {"startCapture", start},
      {"VTCompressionSessionCreate",
       [](Objects&) { return vlm_enc_create(2, 2, 1, 1, false, noteEncoded, nullptr) != nullptr; }},
      {"VTCompressionSessionEncodeFrame", encode},
      {"CVPixelBufferCreate",
       [&](Objects& o) {
         const Bytes pixels(64 * 48 * 4);
         return vlm_enc_encode_bgra(o.encoder, pixels.data(), 64, 48, 256, 0, false);
       }},
      {"VTDecompressionSessionCreate", decode},
      {"VTDecompressionSessionDecodeFrame", decode},
      {"AVSampleBufferDisplayLayer", [](Objects&) { return vlm_present_create() != nullptr; }},
      {"NSView setLayer",
       [](Objects& o) {
         o.machine.setOnMainThread(false);
         return vlm_present_create() != nullptr;
       }},
      {"CMVideoFormatDescriptionCreateForImageBuffer", present},
      {"vImageConvert",
       [&](Objects&) {
         Bytes out(64 * 48 * 4);
         return vlm_pixbuf_to_bgra(frame.get(), out.data(), static_cast<int32_t>(out.size()));
       }},
  };
  for (const auto& [operation, call] : cases) {
    SCOPED_TRACE(operation);
    Objects objects;
    objects.machine.throwFrom(operation);
    EXPECT_FALSE(call(objects));
    objects.machine.run();
    objects.machine.setOnMainThread(true);
    objects.end();
  }
}

TEST(Boundary, NothingIsThrownIntoThePlatform) {
  Objects objects;
  auto& machine = objects.machine;
  const auto frame = picture(64, 48);
  machine.throwFrom("CMBlockBufferGetDataPointer");
  EXPECT_TRUE(vlm_enc_encode(objects.encoder, frame.get(), 0, false));
  machine.setOnMainThread(false);
  machine.throwFrom("layer1 flushAndRemoveImage");
  vlm_present_clear(objects.presenter);
  machine.run();
  EXPECT_EQ(only({"encoded"}, machine.journal.take()), Lines{});
  machine.setOnMainThread(true);
  for (const char* operation : {"stopCapture", "VTCompressionSessionCompleteFrames",
                                "VTDecompressionSessionWait", "layer1 flushAndRemoveImage"}) {
    machine.throwFrom(operation);
  }
  objects.end();
}

}  // namespace
}  // namespace vlm::test
