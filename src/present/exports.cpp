#include "VelmoraMacNative.h"
#include "capture/pixel_buffer.h"
#include "frame/guard.h"
#include "present/presenter.h"

using vlm::frame::guarded;
using vlm::present::VlmPresenter;

void* vlm_present_create(void) {
  return guarded<void*>(nullptr, []() -> void* {
    auto presenter = VlmPresenter::create();
    return presenter ? VlmPresenter::give(std::move(presenter)) : nullptr;
  });
}

void* vlm_present_view(void* handle) {
  return guarded<void*>(nullptr, [&]() -> void* {
    const auto presenter = VlmPresenter::borrow(handle);
    return presenter ? presenter->view().hostPointer() : nullptr;
  });
}

int32_t vlm_present_enqueue(void* handle, void* pixbuf, int64_t ptsNs) {
  return guarded<int32_t>(VLM_PRESENT_FAIL, [&]() -> int32_t {
    const auto presenter = VlmPresenter::borrow(handle);
    auto buffer = vlm::capture::borrowPixelBuffer(pixbuf);
    if (!presenter || !buffer) return VLM_PRESENT_ARG;
    return presenter->enqueue(std::move(buffer), ptsNs);
  });
}

void vlm_present_clear(void* handle) {
  guarded([&] {
    if (const auto presenter = VlmPresenter::borrow(handle)) presenter->clear();
  });
}

void vlm_present_destroy(void* handle) {
  guarded([&] {
    if (const auto presenter = VlmPresenter::takeBack(handle)) presenter->destroy();
  });
}
