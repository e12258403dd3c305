// The same by GStreamer. Arguments: descriptor of the meter, the stream, frames a second.
#include <gst/app/gstappsrc.h>
#include <gst/gst.h>

#include <atomic>
#include <cstdio>
#include <cstdlib>
#include <thread>

#include "bench/support/clock.h"
#include "bench/support/meter.h"
#include "bench/support/stream_file.h"

namespace vlm::bench {
namespace {

constexpr const char* kPipeline =
    "appsrc name=source format=time"
    " caps=video/x-h264,stream-format=byte-stream,alignment=au"
    " ! h264parse ! avdec_h264 max-threads=1 ! videoconvert ! ximagesink name=sink sync=false";

GstPadProbeReturn onPicture(GstPad*, GstPadProbeInfo*, gpointer user) {
  static_cast<DeliveredCount*>(user)->add(1);
  return GST_PAD_PROBE_OK;
}

void play(const std::vector<AccessUnit>& units, double fps, GstAppSrc* source,
          const std::atomic<bool>& ended) {
  Pace pace(fps);
  const std::int64_t begin = monotonicNow();
  for (std::size_t i = 0; !ended; ++i) {
    const auto& unit = units[i % units.size()];
    GstBuffer* buffer = gst_buffer_new_allocate(nullptr, unit.size(), nullptr);
    gst_buffer_fill(buffer, 0, unit.data(), unit.size());
    GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(monotonicNow() - begin);
    gst_app_src_push_buffer(source, buffer);
    pace.next();
  }
}

int run(int meter, const std::string& path, double fps) {
  const auto units = readStream(path);
  gst_init(nullptr, nullptr);
  GError* error = nullptr;
  GstElement* pipeline = gst_parse_launch(kPipeline, &error);
  if (error != nullptr) {
    std::fprintf(stderr, "%s\n", error->message);
    return 1;
  }
  DeliveredCount shown;
  GstElement* sink = gst_bin_get_by_name(GST_BIN(pipeline), "sink");
  GstPad* pad = gst_element_get_static_pad(sink, "sink");
  gst_pad_add_probe(pad, GST_PAD_PROBE_TYPE_BUFFER, onPicture, &shown, nullptr);
  gst_object_unref(pad);
  gst_object_unref(sink);
  gst_element_set_state(pipeline, GST_STATE_PLAYING);
  GstElement* source = gst_bin_get_by_name(GST_BIN(pipeline), "source");
  std::atomic<bool> ended = false;
  std::thread player([&] { play(units, fps, GST_APP_SRC(source), ended); });
  answer(meter, shown);
  ended = true;
  player.join();
  gst_object_unref(source);
  gst_element_set_state(pipeline, GST_STATE_NULL);
  gst_object_unref(pipeline);
  return 0;
}

}  // namespace
}  // namespace vlm::bench

int main(int count, char** arguments) {
  if (count < 4) return 2;
  return vlm::bench::run(std::atoi(arguments[1]), arguments[2], std::atof(arguments[3]));
}
