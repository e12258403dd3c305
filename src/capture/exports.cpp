#include <memory>
#include <utility>

#include "VelmoraMacNative.h"
#include "capture/pixel_buffer.h"
#include "capture/stream.h"
#include "capture/targets.h"
#include "frame/guard.h"
#include "frame/out.h"
#include "frame/text.h"

namespace {

using vlm::capture::borrowPixelBuffer;
using vlm::capture::Content;
using vlm::capture::VlmCapture;
using vlm::frame::guarded;
using vlm::frame::textIn;
using vlm::frame::writeOut;
using Filter = std::shared_ptr<const vlm::platform::SCContentFilter>;

struct Options {
  int32_t fps;
  int32_t maxW;
  int32_t maxH;
  vlm_frame_cb frameCb;
  vlm_audio_cb audioCb;
  void* user;
};

// The three starts differ only in how they pick their target from what there is.
template <class PickTarget>
void* start(const Options& options, PickTarget&& pickTarget) {
  if (options.frameCb == nullptr) return nullptr;
  return guarded<void*>(nullptr, [&]() -> void* {
    const auto content = vlm::capture::shareableContent();
    if (!content) return nullptr;
    Filter filter = pickTarget(*content);
    if (!filter) return nullptr;
    auto capture = std::make_shared<VlmCapture>(options.frameCb, options.audioCb, options.user);
    const bool wantsAudio = options.audioCb != nullptr;
    if (!capture->start(std::move(filter), options.fps, options.maxW, options.maxH, wantsAudio)) {
      return nullptr;
    }
    return VlmCapture::give(std::move(capture));
  });
}

}  // namespace

bool vlm_screen_capture_ready(void) {
  return guarded(false, [] { return vlm::capture::shareableContent() != nullptr; });
}

uint32_t vlm_capture_find_window(const char* bundlePrefix, const char* titlePart) {
  return guarded<uint32_t>(0, [&]() -> uint32_t {
    const auto prefix = textIn(bundlePrefix).value_or("");
    const auto title = textIn(titlePart);
    const auto content = vlm::capture::shareableContent();
    return content ? vlm::capture::findWindow(*content, prefix, title) : 0;
  });
}

void* vlm_capture_start_window(uint32_t windowId, int32_t fps, int32_t maxW, int32_t maxH,
                               vlm_frame_cb frameCb, vlm_audio_cb audioCb, void* user) {
  return start({fps, maxW, maxH, frameCb, audioCb, user}, [&](const Content& content) {
    return vlm::capture::windowFilter(content, windowId);
  });
}

void* vlm_capture_start_app(const char* bundlePrefix, int32_t fps, int32_t maxW, int32_t maxH,
                            vlm_frame_cb frameCb, vlm_audio_cb audioCb, void* user) {
  return start({fps, maxW, maxH, frameCb, audioCb, user}, [&](const Content& content) {
    return vlm::capture::applicationFilter(content, textIn(bundlePrefix).value_or(""));
  });
}

void* vlm_capture_start_display(uint32_t displayId, int32_t fps, int32_t maxW, int32_t maxH,
                                vlm_frame_cb frameCb, vlm_audio_cb audioCb, void* user) {
  return start({fps, maxW, maxH, frameCb, audioCb, user}, [&](const Content& content) {
    return vlm::capture::displayFilter(content, displayId);
  });
}

bool vlm_capture_bounds(void* handle, double* x, double* y, double* width, double* height) {
  return guarded(false, [&] {
    const auto capture = VlmCapture::borrow(handle);
    if (!capture) return false;
    const auto& bounds = capture->contentBounds();
    if (!(bounds.size.width > 0 && bounds.size.height > 0)) return false;
    return vlm::frame::writeRect(bounds, x, y, width, height);
  });
}

void vlm_capture_stop(void* handle) {
  guarded([&] {
    if (const auto capture = VlmCapture::takeBack(handle)) capture->stop();
  });
}

void vlm_pixbuf_retain(void* pixbuf) {
  vlm::platform::CFRetain(pixbuf);
}

void vlm_pixbuf_release(void* pixbuf) {
  vlm::platform::CFRelease(pixbuf);
}

bool vlm_pixbuf_lock(void* pixbuf, uint8_t** lumaBase, int32_t* lumaStride, uint8_t** chromaBase,
                     int32_t* chromaStride) {
  return guarded(false, [&] {
    const auto buffer = borrowPixelBuffer(pixbuf);
    vlm::capture::LockedPlanes planes;
    if (!buffer || !vlm::capture::lockPlanes(*buffer, planes)) return false;
    writeOut(lumaBase, planes.lumaBase);
    writeOut(lumaStride, planes.lumaStride);
    writeOut(chromaBase, planes.chromaBase);
    writeOut(chromaStride, planes.chromaStride);
    return true;
  });
}

void vlm_pixbuf_unlock(void* pixbuf) {
  guarded([&] {
    const auto buffer = borrowPixelBuffer(pixbuf);
    if (!buffer) return;
    vlm::platform::CVPixelBufferUnlockBaseAddress(*buffer,
                                                  vlm::platform::kCVPixelBufferLock_ReadOnly);
  });
}

bool vlm_pixbuf_to_bgra(void* pixbuf, uint8_t* dst, int32_t capacity) {
  return guarded(false, [&] {
    const auto buffer = borrowPixelBuffer(pixbuf);
    if (!buffer || dst == nullptr) return false;
    return vlm::capture::exportBgra(*buffer, dst, capacity);
  });
}
