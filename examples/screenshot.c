/*
 * Takes one picture of a window and writes it as a PPM image:
 *
 *   screenshot PREFIX FILE.ppm
 *
 * PREFIX is the beginning of the application's bundle identifier. A capture's first frame comes at
 * once, and a callback only borrows it: to have it on this thread, it is retained there and
 * released here.
 */
#include <VelmoraMacNative.h>
#include <pthread.h>
#include <stddef.h>
#include <stdio.h>

struct first_frame {
  pthread_mutex_t mutex;
  pthread_cond_t arrived;
  void* pixbuf; /* a reference of our own, NULL until it is here */
  int32_t width, height;
};

static void keep_first(void* pixbuf, int32_t width, int32_t height, int64_t ptsNs, void* user) {
  struct first_frame* first = user;
  (void)ptsNs;
  pthread_mutex_lock(&first->mutex);
  if (first->pixbuf == NULL) {
    vlm_pixbuf_retain(pixbuf);
    first->pixbuf = pixbuf;
    first->width = width;
    first->height = height;
    pthread_cond_signal(&first->arrived);
  }
  pthread_mutex_unlock(&first->mutex);
}

static uint8_t clamped(int value) {
  return (uint8_t)(value < 0 ? 0 : value > 255 ? 255 : value);
}

/* Captured frames are in video range: luma 16 is black and 235 white (ITU-R BT.601). */
static void to_rgb(int y, int cb, int cr, uint8_t rgb[3]) {
  const int luma = 298 * (y - 16) + 128;
  rgb[0] = clamped((luma + 409 * (cr - 128)) / 256);
  rgb[1] = clamped((luma - 100 * (cb - 128) - 208 * (cr - 128)) / 256);
  rgb[2] = clamped((luma + 516 * (cb - 128)) / 256);
}

static int save(const struct first_frame* frame, const char* path) {
  uint8_t *luma, *chroma;
  int32_t luma_stride, chroma_stride;
  FILE* file = fopen(path, "wb");
  if (file == NULL) return 1;
  if (!vlm_pixbuf_lock(frame->pixbuf, &luma, &luma_stride, &chroma, &chroma_stride)) {
    fclose(file);
    return 1;
  }
  fprintf(file, "P6 %d %d 255\n", (int)frame->width, (int)frame->height);
  for (int32_t row = 0; row < frame->height; ++row) {
    const uint8_t* y = luma + (ptrdiff_t)row * luma_stride;
    const uint8_t* cbcr = chroma + (ptrdiff_t)(row / 2) * chroma_stride;
    for (int32_t column = 0; column < frame->width; ++column) {
      const uint8_t* pair = cbcr + column / 2 * 2;
      uint8_t rgb[3];
      to_rgb(y[column], pair[0], pair[1], rgb);
      fwrite(rgb, 1, sizeof rgb, file);
    }
  }
  vlm_pixbuf_unlock(frame->pixbuf);
  return fclose(file) == 0 ? 0 : 1;
}

int main(int argc, char** argv) {
  if (argc != 3) {
    fprintf(stderr, "usage: screenshot PREFIX FILE.ppm\n");
    return 2;
  }
  const uint32_t window = vlm_capture_find_window(argv[1], NULL);
  if (window == 0) {
    fprintf(stderr, "screenshot: no window of an application '%s...'\n", argv[1]);
    return 1;
  }
  struct first_frame first = {PTHREAD_MUTEX_INITIALIZER, PTHREAD_COND_INITIALIZER, NULL, 0, 0};
  void* capture = vlm_capture_start_window(window, 30, 0, 0, keep_first, NULL, &first);
  if (capture == NULL) return 1;

  pthread_mutex_lock(&first.mutex);
  while (first.pixbuf == NULL) pthread_cond_wait(&first.arrived, &first.mutex);
  pthread_mutex_unlock(&first.mutex);
  vlm_capture_stop(capture);

  const int status = save(&first, argv[2]);
  vlm_pixbuf_release(first.pixbuf);
  return status;
}
