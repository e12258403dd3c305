#include "torture/session.h"

#include <csignal>
#include <cstring>
#include <ctime>
#include <stdexcept>

#include "VelmoraMacNative.h"
#include "support/tone.h"

// A call of the library whose time is kept.
#define TIMED(function, ...) calls_.run(#function, [&] { return function(__VA_ARGS__); })

namespace vlm::test {
namespace {

using namespace std::chrono_literals;

void ignoreEvent(int32_t, double, double, double, double, void*) {}

// The test's own connection to the X server breaks too, for which the library can do nothing.
class WithoutBrokenPipe {
 public:
  WithoutBrokenPipe() {
    sigemptyset(&pipe_);
    sigaddset(&pipe_, SIGPIPE);
    pthread_sigmask(SIG_BLOCK, &pipe_, &before_);
  }
  ~WithoutBrokenPipe() {
    const timespec now{};
    sigtimedwait(&pipe_, nullptr, &now);
    pthread_sigmask(SIG_SETMASK, &before_, nullptr);
  }
  WithoutBrokenPipe(const WithoutBrokenPipe&) = delete;
  WithoutBrokenPipe& operator=(const WithoutBrokenPipe&) = delete;

 private:
  sigset_t pipe_, before_;
};

}  // namespace

Session::Session(Services& services, BoundedCalls& calls) : calls_(calls) {
  keys_ = 0;
  encoder_ = TIMED(vlm_enc_create, 640, 480, 30, 1'000'000, true, onEncoded, this);
  decoder_ = TIMED(vlm_dec_create, onDecoded, this);
  presenter_ = TIMED(vlm_present_create);
  makeHostWindow();
  startPicture(services.window());
  microphone_ = TIMED(vlm_audio_in_start, "", onMicrophone, this);
  tracker_ = TIMED(vlm_window_track, services.client(), ignoreEvent, nullptr);
  TIMED(vlm_hotkey_monitor_start, onKey);
  singer_ = std::jthread(
      [this, effect = services.effect()](const std::stop_token& stop) { sing(stop, effect); });
  poker_ = std::jthread([this, pid = services.client(), window = services.window()](
                            const std::stop_token& stop) { poke(stop, pid, window); });
  keeper_ = std::jthread([this](const std::stop_token& stop) { keepSecrets(stop); });
}

Session::~Session() {
  for (auto* thread : {&singer_, &poker_, &keeper_}) thread->request_stop();
  TIMED(vlm_hotkey_monitor_stop);
  TIMED(vlm_window_untrack, tracker_);
  TIMED(vlm_audio_in_stop, microphone_);
  poker_.join();  // it asks about what ends now
  for (void* capture : {screen_, window_, application_}) TIMED(vlm_capture_stop, capture);
  TIMED(vlm_enc_destroy, encoder_);
  TIMED(vlm_dec_destroy, decoder_);
  TIMED(vlm_present_destroy, presenter_);
}

void Session::startPicture(std::uint32_t window) {
  screen_ = TIMED(vlm_capture_start_display, 0, 30, 0, 0, onScreen, onSystemAudio, this);
  window_ = TIMED(vlm_capture_start_window, window, 30, 0, 0, onWindow, nullptr, this);
  application_ = TIMED(vlm_capture_start_app, "Busy", 30, 320, 240, onWindow, nullptr, this);
}

void Session::makeHostWindow() {
  const WithoutBrokenPipe guard;
  try {
    host_.emplace("host", Canvas::Place{360, 260, 160, 120}, 0x707070U);
    if (const void* view = TIMED(vlm_present_view, presenter_)) host_->adopt(view);
  } catch (const std::runtime_error&) {  // the server has just ended
  }
}

std::string Session::missing() const {
  std::string result;
  const std::pair<const char*, int> parts[] = {{"window frames", windowFrames_},
                                               {"frames shown", shown_},
                                               {"microphone", heard_},
                                               {"system audio", systemAudio_},
                                               {"secrets", secrets_},
                                               {"window list", listed_},
                                               {"hot keys", keys_}};
  for (const auto& [name, times] : parts) {
    if (times == 0) result += std::string(result.empty() ? "" : ", ") + name;
  }
  return result;
}

void Session::onScreen(void* pixbuf, int32_t, int32_t, int64_t pts, void* user) {
  auto& calls_ = static_cast<Session*>(user)->calls_;
  TIMED(vlm_enc_encode, static_cast<Session*>(user)->encoder_, pixbuf, pts, false);
}

void Session::onWindow(void*, int32_t, int32_t, int64_t, void* user) {
  ++static_cast<Session*>(user)->windowFrames_;
}

void Session::onEncoded(const uint8_t* data, int32_t size, bool, int64_t pts, void* user) {
  auto& calls_ = static_cast<Session*>(user)->calls_;
  TIMED(vlm_dec_decode, static_cast<Session*>(user)->decoder_, data, size, pts);
}

void Session::onDecoded(void* pixbuf, int32_t, int32_t, int64_t pts, void* user) {
  auto& self = *static_cast<Session*>(user);
  auto& calls_ = self.calls_;
  if (TIMED(vlm_present_enqueue, self.presenter_, pixbuf, pts) == VLM_PRESENT_OK) ++self.shown_;
}

void Session::onSystemAudio(const float*, int32_t, int32_t, int32_t, void* user) {
  ++static_cast<Session*>(user)->systemAudio_;
}

void Session::onMicrophone(const float*, int32_t, void* user) {
  ++static_cast<Session*>(user)->heard_;
}

void Session::onKey(int32_t) {
  ++keys_;
}

// Plays, with an effect now and then.
void Session::sing(const std::stop_token& stop, const std::string& path) {
  const auto tone = sine(1, {997, 997}, 0.5);
  void* playback = TIMED(vlm_audio_out_start, "", 2);
  for (int turn = 0; !stop.stop_requested(); ++turn) {
    TIMED(vlm_audio_out_write, playback, tone.data(), 2 * 960);
    if (turn % 10 == 0) {
      void* effect = TIMED(vlm_sfx_create, path.c_str());
      TIMED(vlm_sfx_play, effect, 1, 2);
      TIMED(vlm_sfx_position, effect);
      TIMED(vlm_sfx_seek, effect, 0.1);
      TIMED(vlm_sfx_destroy, effect);
    }
    if (turn % 25 == 0) TIMED(vlm_audio_devices_json, 0, nullptr, 0);
    std::this_thread::sleep_for(20ms);
  }
  TIMED(vlm_audio_out_stop, playback);
}

// Looks at the desktop and types into it.
void Session::poke(const std::stop_token& stop, std::int32_t pid, std::uint32_t window) {
  constexpr std::uint16_t kF5 = 96;
  VlmWindowEntry entry;
  double x = 0, y = 0, width = 0, height = 0;
  for (int turn = 0; !stop.stop_requested(); ++turn) {
    TIMED(vlm_input_mouse_move, 100 + turn % 100, 50);
    TIMED(vlm_input_key, kF5, turn % 2 == 0, 0);
    TIMED(vlm_input_cursor_pos, &x, &y);
    listed_ += TIMED(vlm_window_enumerate, pid, &entry, 1);
    TIMED(vlm_window_get_bounds, window, &x, &y, &width, &height);
    TIMED(vlm_window_focused_bounds, pid, &x, &y, &width, &height);
    TIMED(vlm_frontmost_pid);
    TIMED(vlm_window_find_pid, "Busy");
    TIMED(vlm_screen_capture_ready);
    TIMED(vlm_present_view, presenter_);
    TIMED(vlm_capture_bounds, window_, &x, &y, &width, &height);
    std::this_thread::sleep_for(30ms);
  }
}

void Session::keepSecrets(const std::stop_token& stop) {
  for (std::uint32_t value = 1; !stop.stop_requested(); ++value) {
    std::uint8_t bytes[4], read[4];
    std::memcpy(bytes, &value, 4);
    const bool isSet = TIMED(vlm_secret_set, "vlm.torture", "a", bytes, 4);
    const auto size = TIMED(vlm_secret_get, "vlm.torture", "a", read, 4);
    if (isSet && size == 4) {
      wrongSecret_ = wrongSecret_ || std::memcmp(bytes, read, 4) != 0;
      ++secrets_;
    }
    TIMED(vlm_secret_delete, "vlm.torture", "a");
    std::this_thread::sleep_for(20ms);
  }
}

}  // namespace vlm::test
