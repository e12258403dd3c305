// The viewing side of the library as a host would have it: a stream decoded and shown in a window.
// Arguments: descriptor of the meter, the stream, frames a second.
#include <glib.h>

#include <atomic>
#include <cstdlib>
#include <thread>

#include "VelmoraMacNative.h"
#include "bench/support/clock.h"
#include "bench/support/meter.h"
#include "bench/support/shared_image.h"
#include "bench/support/stream_file.h"

namespace vlm::bench {
namespace {

struct Viewing {
  void* presenter = nullptr;
  DeliveredCount shown;
};

void onDecoded(void* image, std::int32_t, std::int32_t, std::int64_t pts, void* user) {
  auto& viewing = *static_cast<Viewing*>(user);
  if (vlm_present_enqueue(viewing.presenter, image, pts) == VLM_PRESENT_OK) viewing.shown.add(1);
}

void play(const std::vector<AccessUnit>& units, double fps, void* decoder,
          const std::atomic<bool>& ended) {
  Pace pace(fps);
  for (std::size_t i = 0; !ended; ++i) {
    const auto& unit = units[i % units.size()];
    vlm_dec_decode(decoder, unit.data(), static_cast<std::int32_t>(unit.size()), monotonicNow());
    pace.next();
  }
}

int run(int meter, const std::string& path, double fps) {
  const auto units = readStream(path);
  const Server server;
  const auto& screen = server.screen();
  Viewing viewing;
  viewing.presenter = vlm_present_create();
  placeView(server, vlm_present_view(viewing.presenter),
            {0, 0, screen.width_in_pixels, screen.height_in_pixels});
  void* decoder = vlm_dec_create(onDecoded, &viewing);
  std::atomic<bool> ended = false;
  std::thread player([&] { play(units, fps, decoder, ended); });
  std::thread answering([&] {
    answer(meter, viewing.shown);
    ended = true;
    g_main_context_wakeup(nullptr);
  });
  while (!ended) g_main_context_iteration(nullptr, TRUE);
  answering.join();
  player.join();
  vlm_dec_destroy(decoder);
  vlm_present_destroy(viewing.presenter);
  return 0;
}

}  // namespace
}  // namespace vlm::bench

int main(int count, char** arguments) {
  if (count < 4) return 2;
  return vlm::bench::run(std::atoi(arguments[1]), arguments[2], std::atof(arguments[3]));
}
