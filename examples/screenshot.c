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
#include <stdio.h>
#include <stdlib.h>

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

static int write_ppm(const char* path, const uint8_t* bgra, int32_t width, int32_t height) {
  FILE* file = fopen(path, "wb");
  if (file == NULL) return 1;
  fprintf(file, "P6 %d %d 255\n", (int)width, (int)height);
  const uint8_t* end = bgra + (size_t)width * (size_t)height * 4;
  for (const uint8_t* pixel = bgra; pixel < end; pixel += 4) {
    const uint8_t rgb[3] = {pixel[2], pixel[1], pixel[0]};
    fwrite(rgb, 1, sizeof rgb, file);
  }
  return fclose(file) == 0 ? 0 : 1;
}

static int save(const struct first_frame* frame, const char* path) {
  const int32_t size = frame->width * frame->height * 4;
  uint8_t* bgra = malloc((size_t)size);
  int status = 1;
  if (bgra != NULL && vlm_pixbuf_to_bgra(frame->pixbuf, bgra, size)) {
    status = write_ppm(path, bgra, frame->width, frame->height);
  }
  free(bgra);
  return status;
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
