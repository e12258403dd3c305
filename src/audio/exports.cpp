#include <cstring>
#include <span>

#include "VelmoraMacNative.h"
#include "audio/devices.h"
#include "audio/microphone.h"
#include "audio/playback.h"
#include "audio/registry.h"
#include "audio/sound_effect.h"
#include "frame/guard.h"
#include "frame/text.h"

using vlm::audio::Direction;
using vlm::audio::MicCapture;
using vlm::audio::Playback;
using vlm::audio::Registry;
using vlm::audio::SoundEffect;
using vlm::frame::guarded;
using vlm::frame::textIn;

int32_t vlm_audio_devices_json(int32_t input, char* out, int32_t capacity) {
  return guarded<int32_t>(0, [&]() -> int32_t {
    const auto json = vlm::audio::devicesJson(input != 0 ? Direction::input : Direction::output);
    if (!json) return 0;
    const auto length = static_cast<int32_t>(json->size());
    if (out == nullptr || capacity <= length) return ~length;
    std::memcpy(out, json->c_str(), json->size() + 1);
    return length;
  });
}

void* vlm_audio_in_start(const char* deviceUid, vlm_mic_cb cb, void* user) {
  return guarded<void*>(nullptr, [&]() -> void* {
    if (cb == nullptr) return nullptr;
    auto capture = MicCapture::start(textIn(deviceUid), cb, user);
    return capture ? Registry<MicCapture>::shared().add(std::move(capture)) : nullptr;
  });
}

void vlm_audio_in_stop(void* handle) {
  guarded([&] {
    if (const auto capture = Registry<MicCapture>::shared().remove(handle)) capture->stop();
  });
}

void* vlm_audio_out_start(const char* deviceUid, int32_t channels) {
  return guarded<void*>(nullptr, [&]() -> void* {
    auto playback = Playback::start(textIn(deviceUid), channels);
    return playback ? Registry<Playback>::shared().add(std::move(playback)) : nullptr;
  });
}

void vlm_audio_out_write(void* handle, const float* samples, int32_t count) {
  guarded([&] {
    if (handle == nullptr || samples == nullptr || count <= 0) return;
    if (const auto playback = Registry<Playback>::shared().find(handle)) {
      playback->write({samples, static_cast<std::size_t>(count)});
    }
  });
}

void vlm_audio_out_stop(void* handle) {
  guarded([&] {
    if (const auto playback = Registry<Playback>::shared().remove(handle)) playback->stop();
  });
}

void* vlm_sfx_create(const char* path) {
  return guarded<void*>(nullptr, [&]() -> void* {
    const auto file = textIn(path);
    auto effect = file ? SoundEffect::open(*file) : nullptr;
    return effect ? SoundEffect::give(std::move(effect)) : nullptr;
  });
}

void vlm_sfx_play(void* handle, double volume, int32_t loops) {
  guarded([&] {
    if (const auto effect = SoundEffect::borrow(handle)) effect->play(volume, loops);
  });
}

void vlm_sfx_play_from(void* handle, double startSeconds, double volume) {
  guarded([&] {
    if (const auto effect = SoundEffect::borrow(handle)) effect->playFrom(startSeconds, volume);
  });
}

void vlm_sfx_stop(void* handle) {
  guarded([&] {
    if (const auto effect = SoundEffect::borrow(handle)) effect->stop();
  });
}

void vlm_sfx_seek(void* handle, double seconds) {
  guarded([&] {
    if (const auto effect = SoundEffect::borrow(handle)) effect->seek(seconds);
  });
}

double vlm_sfx_position(void* handle) {
  return guarded(0.0, [&] {
    const auto effect = SoundEffect::borrow(handle);
    return effect ? effect->position() : 0.0;
  });
}

double vlm_sfx_duration(void* handle) {
  return guarded(0.0, [&] {
    const auto effect = SoundEffect::borrow(handle);
    return effect ? effect->duration() : 0.0;
  });
}

bool vlm_sfx_is_playing(void* handle) {
  return guarded(false, [&] {
    const auto effect = SoundEffect::borrow(handle);
    return effect && effect->isPlaying();
  });
}

void vlm_sfx_destroy(void* handle) {
  guarded([&] {
    if (const auto effect = SoundEffect::takeBack(handle)) effect->stop();
  });
}
