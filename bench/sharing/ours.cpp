// The sharing side of the library as a host would have it: the first display, captured and encoded.
// Arguments: descriptor of the meter, frames a second, bits a second, and a file for the stream if
// it is to be kept.
#include <cstdio>
#include <cstdlib>
#include <optional>
#include <span>

#include "VelmoraMacNative.h"
#include "bench/support/meter.h"
#include "bench/support/stream_file.h"

namespace {

struct Sharing {
  int fps = 30;
  int bitrate = 8'000'000;
  void* encoder = nullptr;
  vlm::bench::DeliveredCount delivered;
  std::optional<vlm::bench::StreamFile> file;
};

void onEncoded(const std::uint8_t* data, std::int32_t size, bool, std::int64_t, void* user) {
  auto& sharing = *static_cast<Sharing*>(user);
  const std::span unit(data, static_cast<std::size_t>(size));
  sharing.delivered.add(unit.size());
  if (sharing.file) sharing.file->add(unit);
}

void onFrame(void* image, std::int32_t width, std::int32_t height, std::int64_t pts, void* user) {
  auto& sharing = *static_cast<Sharing*>(user);
  if (sharing.encoder == nullptr) {
    sharing.encoder =
        vlm_enc_create(width, height, sharing.fps, sharing.bitrate, true, onEncoded, &sharing);
  }
  vlm_enc_encode(sharing.encoder, image, pts, false);
}

}  // namespace

int main(int count, char** arguments) {
  if (count < 4) return 2;
  Sharing sharing;
  sharing.fps = std::atoi(arguments[2]);
  sharing.bitrate = std::atoi(arguments[3]);
  if (count > 4) sharing.file.emplace(arguments[4]);
  void* capture = vlm_capture_start_display(0, sharing.fps, 0, 0, onFrame, nullptr, &sharing);
  if (capture == nullptr) return 1;
  vlm::bench::answer(std::atoi(arguments[1]), sharing.delivered);
  vlm_capture_stop(capture);
  vlm_enc_destroy(sharing.encoder);
  return 0;
}
