#include <gst/app/gstappsink.h>
#include <gst/app/gstappsrc.h>
#include <gst/gst.h>

#include <stdexcept>
#include <string>

#include "bench/quality/encoders.h"

namespace vlm::bench {
namespace {

struct Unref {
  void operator()(gpointer object) const { gst_object_unref(object); }
  void operator()(GstSample* sample) const { gst_sample_unref(sample); }
  void operator()(GstBuffer* buffer) const { gst_buffer_unref(buffer); }
};
using Element = std::unique_ptr<GstElement, Unref>;

std::string description(const EncoderSettings& settings) {
  const int milliseconds = settings.lowLatency ? 2000 / settings.fps : 1000;
  return "appsrc name=source format=time block=true caps=video/x-raw,format=NV12,width=" +
         std::to_string(settings.width) + ",height=" + std::to_string(settings.height) +
         ",framerate=" + std::to_string(settings.fps) +
         "/1 ! x264enc speed-preset=ultrafast tune=zerolatency threads=1 key-int-max=30000"
         " vbv-buf-capacity=" +
         std::to_string(milliseconds) +
         " bitrate=" + std::to_string(settings.bitsPerSecond / 1000) +
         " ! video/x-h264,stream-format=byte-stream,alignment=au,profile=main"
         " ! appsink name=sink sync=false";
}

class GStreamer final : public QualityEncoder {
 public:
  explicit GStreamer(const EncoderSettings& settings) {
    gst_init(nullptr, nullptr);
    pipeline_.reset(gst_parse_launch(description(settings).c_str(), nullptr));
    if (!pipeline_) throw std::runtime_error("GStreamer has no such pipeline");
    source_.reset(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "source"));
    sink_.reset(gst_bin_get_by_name(GST_BIN(pipeline_.get()), "sink"));
    gst_element_set_state(pipeline_.get(), GST_STATE_PLAYING);
  }
  ~GStreamer() override { gst_element_set_state(pipeline_.get(), GST_STATE_NULL); }

  void take(const Picture& picture) override {
    picture_.reset(gst_buffer_new_memdup(picture.bytes.data(), picture.bytes.size()));
  }

  Bytes encode(bool, std::int64_t ptsNs) override {
    GstBuffer* buffer = gst_buffer_copy(picture_.get());  // the memory is shared
    GST_BUFFER_PTS(buffer) = static_cast<GstClockTime>(ptsNs);
    gst_app_src_push_buffer(GST_APP_SRC(source_.get()), buffer);
    const std::unique_ptr<GstSample, Unref> sample(
        gst_app_sink_try_pull_sample(GST_APP_SINK(sink_.get()), 10 * GST_SECOND));
    GstMapInfo map;
    if (!sample || !gst_buffer_map(gst_sample_get_buffer(sample.get()), &map, GST_MAP_READ)) {
      throw std::runtime_error("GStreamer gave no access unit");
    }
    Bytes unit(map.data, map.data + map.size);
    gst_buffer_unmap(gst_sample_get_buffer(sample.get()), &map);
    return unit;
  }

 private:
  Element pipeline_;
  Element source_;
  Element sink_;
  std::unique_ptr<GstBuffer, Unref> picture_;
};

}  // namespace

std::unique_ptr<QualityEncoder> makeGStreamer(const EncoderSettings& settings) {
  return std::make_unique<GStreamer>(settings);
}

}  // namespace vlm::bench
