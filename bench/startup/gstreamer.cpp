// The same by GStreamer, from its initialisation on: its times of loading are those of its plugins.
// Prints three times in milliseconds and the resident memory after the initialisation in kilobytes.
#include <gst/gst.h>

#include <cstdio>
#include <future>
#include <stdexcept>
#include <string>

#include "bench/support/clock.h"
#include "bench/support/process_state.h"

namespace vlm::bench {
namespace {

constexpr const char* kPipeline =
    "ximagesrc show-pointer=false use-damage=false ! video/x-raw,framerate=30/1 ! videoconvert"
    " ! video/x-raw,format=NV12"
    " ! x264enc name=encoder speed-preset=ultrafast tune=zerolatency bitrate=8000 threads=1"
    " ! video/x-h264,profile=main ! avdec_h264 name=decoder ! fakesink sync=false";

// The moment at which the first buffer leaves an element.
class FirstBuffer {
 public:
  FirstBuffer(GstElement* pipeline, const char* name) {
    GstElement* element = gst_bin_get_by_name(GST_BIN(pipeline), name);
    GstPad* pad = gst_element_get_static_pad(element, "src");
    gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, onBuffer, this, nullptr);
    gst_object_unref(pad);
    gst_object_unref(element);
  }
  std::int64_t wait() { return moment_.get_future().get(); }

 private:
  static GstPadProbeReturn onBuffer(GstPad*, GstPadProbeInfo*, gpointer user) {
    static_cast<FirstBuffer*>(user)->moment_.set_value(monotonicNow());
    return GST_PAD_PROBE_REMOVE;
  }

  std::promise<std::int64_t> moment_;
};

void run() {
  const auto begin = monotonicNow();
  gst_init(nullptr, nullptr);
  const auto loaded = monotonicNow();
  const auto resident = ProcessState::now().residentKb;
  GError* error = nullptr;
  GstElement* pipeline = gst_parse_launch(kPipeline, &error);
  if (error != nullptr) throw std::runtime_error(error->message);
  FirstBuffer unit(pipeline, "encoder");
  FirstBuffer picture(pipeline, "decoder");
  gst_element_set_state(pipeline, GST_STATE_PLAYING);
  const auto milliseconds = [&](std::int64_t end) {
    return static_cast<double>(end - begin) / 1e6;
  };
  const auto unitAt = unit.wait();
  const auto pictureAt = picture.wait();
  std::printf("%f %f %f %ld\n", milliseconds(loaded), milliseconds(unitAt), milliseconds(pictureAt),
              resident);
  gst_element_set_state(pipeline, GST_STATE_NULL);
  gst_object_unref(pipeline);
}

}  // namespace
}  // namespace vlm::bench

int main() {
  try {
    vlm::bench::run();
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "startup: %s\n", error.what());
    return 1;
  }
}
