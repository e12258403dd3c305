// No bytes make the decoder crash, hang or leak: parameter sets, slices and garbage alike.
#include <cstdint>

#include "VelmoraMacNative.h"

namespace {

void ignoreFrame(void*, std::int32_t, std::int32_t, std::int64_t, void*) {}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
  void* decoder = size % 2 == 0 ? vlm_dec_create(ignoreFrame, nullptr)
                                : vlm_dec_create_bgra(ignoreFrame, nullptr);
  vlm_dec_decode(decoder, data, static_cast<std::int32_t>(size), 0);
  // A second time: what the first left behind must serve it too.
  vlm_dec_decode(decoder, data, static_cast<std::int32_t>(size), 1);
  vlm_dec_destroy(decoder);
  return 0;
}
