#include <fcntl.h>
#include <unistd.h>

#include <array>
#include <stdexcept>
#include <string>
#include <thread>
#include <vector>

#include "bench/latency/paths.h"
#include "support/child_process.h"

namespace vlm::bench {
namespace {

constexpr std::size_t kPicture = std::size_t{kScreenWidth} * kScreenHeight;

// One FFmpeg captures and encodes into a pipe, another decodes from it. The container keeps frames
// apart, so that the decoder need not wait for the next one to know where one ends. The shell
// becomes the decoder; the encoder ends when its pipe has no reader.
std::string pairCommand(int fps, int output) {
  return "exec ffmpeg -nostdin -loglevel error -probesize 100000"
         " -flags low_delay -thread_type slice -f nut -i pipe:0 -fps_mode passthrough"
         " -f rawvideo -pix_fmt gray -flush_packets 1 pipe:" +
         std::to_string(output) +
         " < <(exec ffmpeg -nostdin -loglevel quiet -f x11grab -draw_mouse 0 -framerate " +
         std::to_string(fps) + " -video_size 1920x1080 -i $DISPLAY" +
         " -c:v libx264 -preset ultrafast -tune zerolatency -pix_fmt yuv420p -profile:v main" +
         " -b:v " + std::to_string(kBitrate) + " -flush_packets 1 -f nut pipe:1)";
}

// Fills `picture` from a pipe; false at its end.
bool readPicture(int from, std::vector<std::uint8_t>& picture) {
  for (std::size_t filled = 0; filled < picture.size();) {
    const auto size = read(from, picture.data() + filled, picture.size() - filled);
    if (size <= 0) return false;
    filled += static_cast<std::size_t>(size);
  }
  return true;
}

}  // namespace

Latencies measureFfmpegPair(int fps, double seconds) {
  std::array<int, 2> ends{};
  if (pipe2(ends.data(), O_CLOEXEC) != 0) throw std::runtime_error("no pipe");
  fcntl(ends[0], F_SETPIPE_SZ, 1 << 20);
  const auto warm = warmAt();
  Sightings sightings(warm);
  test::ChildProcess pair({"bash", "-c", pairCommand(fps, ends[1])}, ends[1]);
  close(ends[1]);
  std::thread reader([&] {
    std::vector<std::uint8_t> picture(kPicture);
    while (readPicture(ends[0], picture)) sightings.add(picture, kScreenWidth);
  });
  watch(warm, seconds);
  pair.end();
  reader.join();
  close(ends[0]);
  return sightings.summary();
}

}  // namespace vlm::bench
