/*
 * Plays a tone of 440 Hz on the default output:
 *
 *   tone SECONDS
 *
 * A playback has a short buffer and no callback: the host writes what it has as it comes, here a
 * hundredth of a second at a time, and stops when it is done.
 */
#include <VelmoraMacNative.h>
#include <math.h>
#include <stdio.h>
#include <stdlib.h>
#include <time.h>

enum { RATE = 48000, CHANNELS = 2, BLOCKS_A_SECOND = 100, BLOCK = RATE / BLOCKS_A_SECOND };

static void wait_until_written(struct timespec* due) {
  due->tv_nsec += 1000000000L / BLOCKS_A_SECOND;
  if (due->tv_nsec >= 1000000000L) {
    due->tv_nsec -= 1000000000L;
    ++due->tv_sec;
  }
  while (clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, due, NULL) != 0) {
  }
}

int main(int argc, char** argv) {
  const long seconds = argc == 2 ? strtol(argv[1], NULL, 10) : 0;
  if (seconds <= 0) {
    fprintf(stderr, "usage: tone SECONDS\n");
    return 2;
  }
  void* playback = vlm_audio_out_start(NULL, CHANNELS);
  if (playback == NULL) {
    fprintf(stderr, "tone: there is no output\n");
    return 1;
  }
  const double step = 2 * 3.14159265358979323846 * 440 / RATE;
  double phase = 0;
  struct timespec due;
  clock_gettime(CLOCK_MONOTONIC, &due);
  for (long block = 0; block < seconds * BLOCKS_A_SECOND; ++block) {
    float samples[BLOCK * CHANNELS];
    for (int frame = 0; frame < BLOCK; ++frame, phase += step) {
      samples[frame * CHANNELS] = samples[frame * CHANNELS + 1] = 0.25F * (float)sin(phase);
    }
    vlm_audio_out_write(playback, samples, BLOCK * CHANNELS);
    wait_until_written(&due);
  }
  vlm_audio_out_stop(playback);
  return 0;
}
