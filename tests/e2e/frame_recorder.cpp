#include "e2e/frame_recorder.h"

#include <chrono>
#include <cstring>
#include <fstream>

#include "platform/portable/pixel_buffer.h"
#include "support/child_process.h"
#include "support/scratch_folder.h"

namespace vlm::test {
namespace {

using namespace std::chrono_literals;

std::vector<std::uint8_t> packed(const platform::PixelPlane& plane, std::size_t bytesPerPixel) {
  const std::size_t bytes = plane.width * bytesPerPixel;
  std::vector<std::uint8_t> rows(bytes * plane.height);
  for (std::size_t row = 0; row < plane.height; ++row) {
    std::memcpy(&rows[row * bytes], plane.base + row * plane.bytesPerRow, bytes);
  }
  return rows;
}

}  // namespace

void writePng(const Frame& frame, const std::string& path) {
  const ScratchFolder folder;
  const auto raw = folder.file("frame.nv12");
  std::ofstream file(raw, std::ios::binary);
  for (const auto* plane : {&frame.luma, &frame.chroma}) {
    file.write(reinterpret_cast<const char*>(plane->data()),
               static_cast<std::streamsize>(plane->size()));
  }
  file.close();
  const auto size = std::to_string(frame.width) + "x" + std::to_string(frame.height);
  outputOf({"ffmpeg", "-v", "error", "-y", "-f", "rawvideo", "-pix_fmt", "nv12", "-s", size, "-i",
            raw, "-frames:v", "1", path});
}

double distance(const std::string& image, const std::string& other) {
  // Exits with 1 for pictures that differ at all.
  const auto result = runCommand({"compare", "-metric", "RMSE", image, other, "null:"});
  const auto open = result.output.find('(');
  return open == std::string::npos ? 1 : std::stod(result.output.substr(open + 1));
}

double distanceToScreen(const Frame& frame, const std::string& geometry) {
  const ScratchFolder folder;
  const auto ours = folder.file("ours.png"), screen = folder.file("screen.png");
  writePng(frame, ours);
  std::vector<std::string> import{"import", "-silent", "-window", "root"};
  if (!geometry.empty()) import.insert(import.end(), {"-crop", geometry, "+repage"});
  import.push_back(screen);
  outputOf(import);
  return distance(ours, screen);
}

FrameRecorder::~FrameRecorder() {
  stop();
  while (!kept_.empty()) release();
}

void FrameRecorder::stop() {
  vlm_capture_stop(capture_);
  capture_ = nullptr;
}

std::size_t FrameRecorder::count() {
  const std::lock_guard lock(mutex_);
  return frames_.size();
}

bool FrameRecorder::waitFor(std::size_t index) {
  std::unique_lock lock(mutex_);
  return arrived_.wait_for(lock, 10s, [&] { return frames_.size() > index; });
}

Frame FrameRecorder::last() {
  std::unique_lock lock(mutex_);
  arrived_.wait_for(lock, 10s, [&] { return !frames_.empty(); });
  for (;;) {
    const auto seen = frames_.size();
    if (!arrived_.wait_for(lock, 400ms, [&] { return frames_.size() > seen; })) break;
  }
  return frames_.empty() ? Frame{} : frames_.back();
}

Frame FrameRecorder::waitUntil(const std::function<bool(const Frame&)>& condition) {
  std::unique_lock lock(mutex_);
  arrived_.wait_for(lock, 10s, [&] { return !frames_.empty() && condition(frames_.back()); });
  return frames_.empty() ? Frame{} : frames_.back();
}

Frame FrameRecorder::at(std::size_t index) {
  const std::lock_guard lock(mutex_);
  return frames_.at(index);
}

void FrameRecorder::release() {
  const std::lock_guard lock(mutex_);
  if (kept_.empty()) return;
  vlm_pixbuf_release(kept_.front());
  kept_.erase(kept_.begin());
}

void FrameRecorder::onFrame(void* pixbuf, std::int32_t width, std::int32_t height,
                            std::int64_t ptsNs, void* user) {
  auto& self = *static_cast<FrameRecorder*>(user);
  const auto& buffer = *static_cast<const platform::CVPixelBuffer*>(pixbuf);
  Frame frame{
      width,           height, ptsNs, packed(buffer.plane(0), 1), packed(buffer.plane(1), 2),
      buffer.changes()};
  const std::lock_guard lock(self.mutex_);
  if (self.frames_.size() < self.keep_) {
    vlm_pixbuf_retain(pixbuf);
    self.kept_.push_back(pixbuf);
  }
  self.frames_.push_back(std::move(frame));
  self.arrived_.notify_all();
}

}  // namespace vlm::test
