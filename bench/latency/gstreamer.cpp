#include <gst/app/gstappsink.h>
#include <gst/gst.h>

#include <memory>
#include <stdexcept>
#include <string>

#include "bench/latency/paths.h"

namespace vlm::bench {
namespace {

struct Unref {
  void operator()(gpointer object) const { gst_object_unref(object); }
};
struct SampleUnref {
  void operator()(GstSample* sample) const { gst_sample_unref(sample); }
};
using Element = std::unique_ptr<GstElement, Unref>;

std::string description(int fps) {
  return "ximagesrc show-pointer=false use-damage=false ! video/x-raw,framerate=" +
         std::to_string(fps) +
         "/1 ! videoconvert ! video/x-raw,format=NV12"
         " ! x264enc speed-preset=ultrafast tune=zerolatency bitrate=" +
         std::to_string(kBitrate / 1000) +
         " ! video/x-h264,profile=main ! avdec_h264"
         " ! appsink name=sink sync=false max-buffers=1 drop=true";
}

// The luma plane is the first of the formats that the decoder gives out.
GstFlowReturn onSample(GstAppSink* sink, gpointer user) {
  const std::unique_ptr<GstSample, SampleUnref> sample(gst_app_sink_pull_sample(sink));
  GstBuffer* buffer = sample ? gst_sample_get_buffer(sample.get()) : nullptr;
  GstMapInfo map;
  if (buffer == nullptr || !gst_buffer_map(buffer, &map, GST_MAP_READ)) return GST_FLOW_OK;
  static_cast<Sightings*>(user)->add({map.data, map.size}, kScreenWidth);
  gst_buffer_unmap(buffer, &map);
  return GST_FLOW_OK;
}

Element parse(const std::string& text) {
  gst_init(nullptr, nullptr);
  GError* error = nullptr;
  Element pipeline(gst_parse_launch(text.c_str(), &error));
  if (error == nullptr) return pipeline;
  const std::string message = error->message;
  g_error_free(error);
  throw std::runtime_error(message);
}

}  // namespace

Latencies measureGStreamer(int fps, double seconds) {
  const auto pipeline = parse(description(fps));
  const auto warm = warmAt();
  Sightings sightings(warm);
  const Element sink(gst_bin_get_by_name(GST_BIN(pipeline.get()), "sink"));
  GstAppSinkCallbacks callbacks{};
  callbacks.new_sample = onSample;
  gst_app_sink_set_callbacks(GST_APP_SINK(sink.get()), &callbacks, &sightings, nullptr);
  gst_element_set_state(pipeline.get(), GST_STATE_PLAYING);
  watch(warm, seconds);
  gst_element_set_state(pipeline.get(), GST_STATE_NULL);
  return sightings.summary();
}

}  // namespace vlm::bench
