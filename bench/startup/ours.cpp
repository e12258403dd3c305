// From the loading of the library to the first access unit and the first decoded picture of the
// screen, as a host that opens it at run time sees it. Prints three times in milliseconds and the
// resident memory after the loading in kilobytes. Argument: the library.
#include <dlfcn.h>

#include <cstdio>
#include <future>
#include <stdexcept>
#include <utility>

#include "VelmoraMacNative.h"
#include "bench/support/clock.h"
#include "bench/support/process_state.h"

namespace vlm::bench {
namespace {

template <class Function>
Function* find(void* library, const char* name) {
  void* symbol = dlsym(library, name);
  if (symbol == nullptr) throw std::runtime_error(name);
  return reinterpret_cast<Function*>(symbol);
}

struct Loop {
  explicit Loop(void* library)
      : create(find<decltype(vlm_enc_create)>(library, "vlm_enc_create")),
        encode(find<decltype(vlm_enc_encode)>(library, "vlm_enc_encode")),
        decode(find<decltype(vlm_dec_decode)>(library, "vlm_dec_decode")) {}

  decltype(vlm_enc_create)* const create;
  decltype(vlm_enc_encode)* const encode;
  decltype(vlm_dec_decode)* const decode;
  void* encoder = nullptr;
  void* decoder = nullptr;
  bool isFirst = true;
  std::promise<std::int64_t> unit;
  std::promise<std::int64_t> picture;
};

void onDecoded(void*, std::int32_t, std::int32_t, std::int64_t, void* user) {
  static_cast<Loop*>(user)->picture.set_value(monotonicNow());
}

void onEncoded(const std::uint8_t* data, std::int32_t size, bool, std::int64_t pts, void* user) {
  auto& loop = *static_cast<Loop*>(user);
  loop.unit.set_value(monotonicNow());
  loop.decode(loop.decoder, data, size, pts);
}

void onFrame(void* image, std::int32_t width, std::int32_t height, std::int64_t pts, void* user) {
  auto& loop = *static_cast<Loop*>(user);
  if (!std::exchange(loop.isFirst, false)) return;
  loop.encoder = loop.create(width, height, 30, 8'000'000, true, onEncoded, user);
  loop.encode(loop.encoder, image, pts, false);
}

void run(const char* path) {
  const auto begin = monotonicNow();
  void* library = dlopen(path, RTLD_NOW);
  if (library == nullptr) throw std::runtime_error(dlerror());
  const auto loaded = monotonicNow();
  const auto resident = ProcessState::now().residentKb;
  Loop loop(library);
  loop.decoder = find<decltype(vlm_dec_create)>(library, "vlm_dec_create")(onDecoded, &loop);
  void* capture = find<decltype(vlm_capture_start_display)>(library, "vlm_capture_start_display")(
      0, 30, 0, 0, onFrame, nullptr, &loop);
  if (capture == nullptr) throw std::runtime_error("the display can't be captured");
  const auto milliseconds = [&](std::int64_t end) {
    return static_cast<double>(end - begin) / 1e6;
  };
  const auto unit = loop.unit.get_future().get();
  const auto picture = loop.picture.get_future().get();
  std::printf("%f %f %f %ld\n", milliseconds(loaded), milliseconds(unit), milliseconds(picture),
              resident);
  find<decltype(vlm_capture_stop)>(library, "vlm_capture_stop")(capture);
  find<decltype(vlm_enc_destroy)>(library, "vlm_enc_destroy")(loop.encoder);
  find<decltype(vlm_dec_destroy)>(library, "vlm_dec_destroy")(loop.decoder);
}

}  // namespace
}  // namespace vlm::bench

int main(int count, char** arguments) {
  if (count < 2) return 2;
  try {
    vlm::bench::run(arguments[1]);
    return 0;
  } catch (const std::exception& error) {
    std::fprintf(stderr, "startup: %s\n", error.what());
    return 1;
  }
}
