#include "platform/linux/media/sound_container.h"

#include <dlfcn.h>

extern "C" {
#include <libavformat/avformat.h>
}

#include <utility>

namespace vlm::platform::media {

struct LibavformatFunctions {
  decltype(&avformat_open_input) openInput = nullptr;
  decltype(&avformat_find_stream_info) findStreamInfo = nullptr;
  decltype(&av_find_best_stream) findBestStream = nullptr;
  decltype(&av_read_frame) readFrame = nullptr;
  decltype(&avformat_close_input) closeInput = nullptr;

  bool areComplete() const {
    return openInput && findStreamInfo && findBestStream && readFrame && closeInput;
  }
};

namespace {

template <class Function>
void find(void* library, const char* name, Function& function) {
  function = reinterpret_cast<Function>(dlsym(library, name));
}

LibavformatFunctions load() {
  LibavformatFunctions functions;
  // Of the version that the headers are of, and never unloaded, like other libraries.
  constexpr const char* kName = "libavformat.so." AV_STRINGIFY(LIBAVFORMAT_VERSION_MAJOR);
  void* library = dlopen(kName, RTLD_NOW | RTLD_LOCAL);
  if (library == nullptr) return functions;
  find(library, "avformat_open_input", functions.openInput);
  find(library, "avformat_find_stream_info", functions.findStreamInfo);
  find(library, "av_find_best_stream", functions.findBestStream);
  find(library, "av_read_frame", functions.readFrame);
  find(library, "avformat_close_input", functions.closeInput);
  return functions;
}

// Null when they can't be loaded.
const LibavformatFunctions* functionsOfLibavformat() {
  static const LibavformatFunctions functions = load();
  return functions.areComplete() ? &functions : nullptr;
}

}  // namespace

void SoundContainer::Close::operator()(AVFormatContext* format) const noexcept {
  functions->closeInput(&format);
}

bool SoundContainer::open(const std::string& path) {
  const auto* functions = functionsOfLibavformat();
  if (functions == nullptr) return false;
  AVFormatContext* format = nullptr;
  // As a file and nothing else, whatever the path looks like or the file refers to.
  AVDictionary* options = nullptr;
  av_dict_set(&options, "protocol_whitelist", "file", 0);
  const int opened = functions->openInput(&format, ("file:" + path).c_str(), nullptr, &options);
  av_dict_free(&options);
  if (opened < 0) return false;
  format_ = {format, Close{functions}};
  if (functions->findStreamInfo(format, nullptr) < 0) return false;
  index_ = functions->findBestStream(format, AVMEDIA_TYPE_AUDIO, -1, -1, &decoder_, 0);
  return index_ >= 0 && decoder_ != nullptr;
}

AVCodecContextPtr SoundContainer::makeDecoder() const {
  AVCodecContextPtr context(avcodec_alloc_context3(decoder_));
  const AVStream& stream = *format_->streams[index_];
  if (!context || avcodec_parameters_to_context(context.get(), stream.codecpar) < 0) return nullptr;
  context->pkt_timebase = stream.time_base;
  return avcodec_open2(context.get(), decoder_, nullptr) >= 0 ? std::move(context) : nullptr;
}

bool SoundContainer::read(AVPacket& packet) {
  const auto& functions = *format_.get_deleter().functions;
  while (functions.readFrame(format_.get(), &packet) >= 0) {
    if (packet.stream_index == index_) return true;
    av_packet_unref(&packet);
  }
  return false;
}

}  // namespace vlm::platform::media
