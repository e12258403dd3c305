/*
 * Every function of the boundary given null handles and bad arguments, in C: each answers at once
 * with its failure value and leaves its out-parameters alone.
 */
#include <stdio.h>
#include <string.h>

#include "VelmoraMacNative.h"

static int failures = 0;

#define EXPECT(condition)                                                     \
  do {                                                                        \
    if (!(condition)) {                                                       \
      fprintf(stderr, "%s:%d: not so: %s\n", __FILE__, __LINE__, #condition); \
      ++failures;                                                             \
    }                                                                         \
  } while (0)

static void onFrame(void* pixbuf, int32_t width, int32_t height, int64_t ptsNs, void* user) {
  (void)pixbuf, (void)width, (void)height, (void)ptsNs;
  ++*(int*)user;
}

static void onEncoded(const uint8_t* data, int32_t size, bool keyframe, int64_t ptsNs, void* user) {
  (void)data, (void)size, (void)keyframe, (void)ptsNs;
  ++*(int*)user;
}

static void capture(void) {
  int calls = 0;
  double x = 1, y = 2, width = 3, height = 4;
  EXPECT(vlm_capture_find_window("no such application", "no such title") == 0);
  EXPECT(vlm_capture_start_window(1, 30, 0, 0, NULL, NULL, NULL) == NULL);
  EXPECT(vlm_capture_start_window(0, 30, 0, 0, onFrame, NULL, &calls) == NULL);
  EXPECT(vlm_capture_start_app("any", 30, 0, 0, NULL, NULL, NULL) == NULL);
  EXPECT(vlm_capture_start_app(NULL, 30, 0, 0, onFrame, NULL, &calls) == NULL);
  EXPECT(vlm_capture_start_app("", 30, 0, 0, onFrame, NULL, &calls) == NULL);
  EXPECT(vlm_capture_start_display(0, 30, 0, 0, NULL, NULL, NULL) == NULL);
  EXPECT(!vlm_capture_bounds(NULL, &x, &y, &width, &height));
  EXPECT(x == 1 && y == 2 && width == 3 && height == 4);
  vlm_capture_stop(NULL);
  /* Answers one way or the other, with and without a screen. */
  (void)vlm_screen_capture_ready();
  EXPECT(calls == 0);
}

static void pixelBuffers(void) {
  uint8_t byte = 7, *luma = &byte, *chroma = &byte;
  int32_t lumaStride = 5, chromaStride = 6;
  vlm_pixbuf_retain(NULL);
  vlm_pixbuf_release(NULL);
  EXPECT(!vlm_pixbuf_lock(NULL, &luma, &lumaStride, &chroma, &chromaStride));
  EXPECT(luma == &byte && chroma == &byte && lumaStride == 5 && chromaStride == 6);
  vlm_pixbuf_unlock(NULL);
  EXPECT(!vlm_pixbuf_to_bgra(NULL, &byte, 1));
  EXPECT(byte == 7);
}

static void encoder(void) {
  int calls = 0;
  const uint8_t pixel[4] = {0};
  EXPECT(vlm_enc_create(64, 64, 30, 1000000, true, NULL, NULL) == NULL);
  EXPECT(!vlm_enc_encode(NULL, NULL, 0, false));
  EXPECT(!vlm_enc_encode_bgra(NULL, pixel, 1, 1, 4, 0, false));
  vlm_enc_set_bitrate(NULL, 1);
  vlm_enc_destroy(NULL);

  void* handle = vlm_enc_create(64, 64, 30, 1000000, true, onEncoded, &calls);
  EXPECT(handle != NULL);
  EXPECT(!vlm_enc_encode(handle, NULL, 0, true));
  EXPECT(!vlm_enc_encode_bgra(handle, NULL, 64, 64, 256, 0, true));
  EXPECT(!vlm_enc_encode_bgra(handle, pixel, 0, 1, 4, 0, true));
  EXPECT(!vlm_enc_encode_bgra(handle, pixel, 1, -1, 4, 0, true));
  vlm_enc_destroy(handle);
  EXPECT(calls == 0);
}

static void decoder(void) {
  int calls = 0;
  /* A slice of which no parameter sets have been seen, and bytes that are no access unit. */
  const uint8_t slice[] = {0, 0, 0, 1, 0x65, 0x88, 0x84, 0x00};
  const uint8_t garbage[] = {1, 2, 3};
  EXPECT(vlm_dec_create(NULL, NULL) == NULL);
  EXPECT(vlm_dec_create_bgra(NULL, NULL) == NULL);
  EXPECT(!vlm_dec_decode(NULL, slice, sizeof slice, 0));
  vlm_dec_flush(NULL);
  vlm_dec_destroy(NULL);

  void* made[] = {vlm_dec_create(onFrame, &calls), vlm_dec_create_bgra(onFrame, &calls)};
  for (size_t i = 0; i < 2; ++i) {
    EXPECT(made[i] != NULL);
    EXPECT(!vlm_dec_decode(made[i], NULL, 4, 0));
    EXPECT(!vlm_dec_decode(made[i], slice, 0, 0));
    EXPECT(!vlm_dec_decode(made[i], slice, -1, 0));
    EXPECT(!vlm_dec_decode(made[i], slice, sizeof slice, 0));
    EXPECT(!vlm_dec_decode(made[i], garbage, sizeof garbage, 0));
    vlm_dec_flush(made[i]);
    vlm_dec_destroy(made[i]);
  }
  EXPECT(calls == 0);
}

static void presenter(void) {
  EXPECT(vlm_present_view(NULL) == NULL);
  EXPECT(vlm_present_enqueue(NULL, NULL, 0) == VLM_PRESENT_ARG);
  vlm_present_clear(NULL);
  vlm_present_destroy(NULL);

  /* There is none without a display; one that there is refuses a missing frame. */
  void* handle = vlm_present_create();
  EXPECT(vlm_present_enqueue(handle, NULL, 0) == VLM_PRESENT_ARG);
  vlm_present_destroy(handle);
}

static void onEvent(int32_t event, double x, double y, double width, double height, void* user) {
  (void)event, (void)x, (void)y, (void)width, (void)height;
  ++*(int*)user;
}

static void onKey(int32_t key) {
  (void)key;
}

static void windows(void) {
  int calls = 0;
  double x = 1, y = 2, width = 3, height = 4;
  VlmWindowEntry entry;
  memset(&entry, 7, sizeof entry);
  EXPECT(sizeof entry == 152);
  EXPECT(vlm_window_enumerate(0, &entry, 1) == -1);
  EXPECT(vlm_window_enumerate(1, NULL, 1) == -1);
  EXPECT(vlm_window_enumerate(1, &entry, 0) == -1);
  EXPECT(vlm_window_enumerate(1, &entry, 1) == 0);
  EXPECT(entry.isMain == 0x07070707 && entry.title[127] == 7);
  EXPECT(vlm_window_find_pid(NULL) == 0);
  EXPECT(vlm_window_find_pid("") == 0);
  EXPECT(!vlm_window_get_bounds(0, &x, &y, &width, &height));
  EXPECT(!vlm_window_get_bounds(1, NULL, NULL, NULL, NULL));
  EXPECT(!vlm_window_focused_bounds(0, &x, &y, &width, &height));
  EXPECT(!vlm_window_focused_bounds(1, &x, &y, &width, &height));
  EXPECT(x == 1 && y == 2 && width == 3 && height == 4);
  EXPECT(vlm_window_track(1, NULL, NULL) == NULL);
  EXPECT(vlm_window_track(0, onEvent, &calls) == NULL);
  /* A platform that follows any process ends it at once. */
  vlm_window_untrack(vlm_window_track(1, onEvent, &calls));
  vlm_window_untrack(NULL);
  EXPECT(calls == 0);
}

static void input(void) {
  vlm_input_mouse_move(-1e300, 1e300);
  vlm_input_warp_cursor(1e300, -1e300);
  vlm_input_mouse_button(-1, true, 0, 0);
  vlm_input_mouse_wheel(1e300, -1e300);
  vlm_input_key(65535, true, UINT64_MAX);
  /* Answers one way or the other, with and without a display. */
  (void)vlm_input_cursor_pos(NULL, NULL);
  EXPECT(vlm_frontmost_pid() == 0);
  EXPECT(!vlm_hotkey_monitor_start(NULL));
  EXPECT(vlm_hotkey_monitor_start(onKey));
  vlm_hotkey_monitor_stop();
  vlm_hotkey_monitor_stop();
}

static void onMicrophone(const float* samples, int32_t count, void* user) {
  (void)samples, (void)count;
  ++*(int*)user;
}

static void audio(void) {
  int calls = 0;
  const float sample = 0;
  char text[3] = "..";
  /* The test runs without a sound server: there are no devices. */
  EXPECT(vlm_audio_devices_json(0, NULL, 3) == ~2);
  EXPECT(vlm_audio_devices_json(1, text, 2) == ~2);
  EXPECT(strcmp(text, "..") == 0);
  EXPECT(vlm_audio_devices_json(-1, text, 3) == 2);
  EXPECT(strcmp(text, "[]") == 0);
  EXPECT(vlm_audio_in_start(NULL, NULL, NULL) == NULL);
  /* On a platform that starts them all the same they are ended at once. */
  vlm_audio_in_stop(vlm_audio_in_start("no such device", onMicrophone, &calls));
  vlm_audio_out_stop(vlm_audio_out_start("no such device", -1));
  vlm_audio_in_stop(NULL);
  vlm_audio_out_write(NULL, &sample, 1);
  vlm_audio_out_write(&calls, &sample, 1);
  vlm_audio_out_stop(NULL);
  EXPECT(calls == 0);
}

static void soundEffects(void) {
  EXPECT(vlm_sfx_create(NULL) == NULL);
  EXPECT(vlm_sfx_create("") == NULL);
  EXPECT(vlm_sfx_create("no such file") == NULL);
  vlm_sfx_play(NULL, 1, 0);
  vlm_sfx_play_from(NULL, 0, 1);
  vlm_sfx_stop(NULL);
  vlm_sfx_seek(NULL, 1);
  EXPECT(vlm_sfx_position(NULL) == 0);
  EXPECT(vlm_sfx_duration(NULL) == 0);
  EXPECT(!vlm_sfx_is_playing(NULL));
  vlm_sfx_destroy(NULL);
}

static void systemServices(void) {
  uint8_t byte = 7;
  char text[64] = "untouched";
  EXPECT(!vlm_secret_set(NULL, "account", &byte, 1));
  EXPECT(!vlm_secret_set("service", NULL, &byte, 1));
  EXPECT(!vlm_secret_set("service", "account", NULL, 1));
  EXPECT(!vlm_secret_set("service", "account", &byte, -1));
  EXPECT(vlm_secret_get(NULL, "account", &byte, 1) == 0);
  EXPECT(vlm_secret_get("service", NULL, &byte, 1) == 0);
  EXPECT(!vlm_secret_delete(NULL, "account"));
  EXPECT(!vlm_secret_delete("service", NULL));
  EXPECT(byte == 7);

  EXPECT(vlm_machine_id(NULL, 64) == 0);
  EXPECT(vlm_machine_id(text, 36) == 0);
  EXPECT(strcmp(text, "untouched") == 0);

  /* Without a display nothing is permitted; the test runs without one. */
  EXPECT(!vlm_perm_screen_recording(true));
  EXPECT(!vlm_perm_accessibility(true));
  /* What opens is the desktop's matter. */
  (void)vlm_perm_open_settings(NULL);
}

int main(void) {
  EXPECT(vlm_abi_version() == 3);
  capture();
  pixelBuffers();
  encoder();
  decoder();
  presenter();
  windows();
  input();
  systemServices();
  audio();
  soundEffects();
  return failures == 0 ? 0 : 1;
}
