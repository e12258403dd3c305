// A GStreamer pipeline that ends in a fakesink called "sink", with its buffers counted.
// Arguments: descriptor of the meter, description of the pipeline.
#include <gst/gst.h>

#include <cstdio>
#include <cstdlib>

#include "bench/support/meter.h"

namespace {

void onBuffer(GstElement*, GstBuffer* buffer, GstPad*, gpointer user) {
  static_cast<vlm::bench::DeliveredCount*>(user)->add(gst_buffer_get_size(buffer));
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 3) return 2;
  gst_init(nullptr, nullptr);
  GError* error = nullptr;
  GstElement* pipeline = gst_parse_launch(arguments[2], &error);
  if (error != nullptr) {
    std::fprintf(stderr, "%s\n", error->message);
    return 1;
  }
  vlm::bench::DeliveredCount delivered;
  GstElement* sink = gst_bin_get_by_name(GST_BIN(pipeline), "sink");
  g_object_set(sink, "signal-handoffs", TRUE, nullptr);
  g_signal_connect(sink, "handoff", G_CALLBACK(onBuffer), &delivered);
  gst_object_unref(sink);
  gst_element_set_state(pipeline, GST_STATE_PLAYING);
  vlm::bench::answer(std::atoi(arguments[1]), delivered);
  gst_element_set_state(pipeline, GST_STATE_NULL);
  gst_object_unref(pipeline);
  return 0;
}
