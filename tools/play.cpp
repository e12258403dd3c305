#include <glib.h>

#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <thread>

#include "access_unit_splitter.h"
#include "command.h"
#include "failure.h"
#include "options.h"
#include "run.h"
#include "viewer.h"

namespace vlm::tools {
namespace {

struct PlayOptions {
  ViewOptions view;
  RunOptions run;
  std::string file;
  double fps = 30;
};

// A whole file, mapped.
class MappedFile {
 public:
  explicit MappedFile(const std::string& path) {
    GError* error = nullptr;
    file_.reset(g_mapped_file_new(path.c_str(), FALSE, &error));
    if (file_) return;
    const std::string reason = error->message;
    g_error_free(error);
    throw Failure("can't read " + path + ": " + reason);
  }

  std::span<const std::uint8_t> bytes() const {
    // NOLINTNEXTLINE(bugprone-casting-through-void)
    return {reinterpret_cast<const std::uint8_t*>(g_mapped_file_get_contents(file_.get())),
            g_mapped_file_get_length(file_.get())};
  }

 private:
  struct Unmap {
    void operator()(GMappedFile* file) const { g_mapped_file_unref(file); }
  };
  std::unique_ptr<GMappedFile, Unmap> file_;
};

// Feeds a stream to the viewer at a steady pace.
class Player {
 public:
  Player(std::span<const std::uint8_t> stream, double fps, Viewer& viewer, SharedCounts& counts)
      : splitter_(stream), interval_(1 / fps), viewer_(viewer), counts_(counts) {}

  // Until the end of the stream, or until it is stopped.
  void play(const std::stop_token& stop) {
    const auto start = std::chrono::steady_clock::now();
    for (std::int64_t number = 0; const auto unit = splitter_.next(); ++number) {
      using Clock = std::chrono::steady_clock;
      const auto due = start + std::chrono::duration_cast<Clock::duration>(interval_ * number);
      if (isStoppedBefore(due, stop)) return;
      feed(*unit);
    }
    viewer_.settle();
  }

 private:
  bool isStoppedBefore(std::chrono::steady_clock::time_point due, const std::stop_token& stop) {
    std::unique_lock lock(mutex_);
    return wake_.wait_until(lock, stop, due, [&] { return stop.stop_requested(); });
  }

  void feed(const AccessUnit& unit) {
    counts_.change([&](Counts& counts) {
      ++counts.encoded;
      counts.bytes += unit.bytes.size();
      if (unit.keyframe) ++counts.keyframes;
    });
    viewer_.decode(unit, monotonicNow());
  }

  AccessUnitSplitter splitter_;
  const std::chrono::duration<double> interval_;
  Viewer& viewer_;
  SharedCounts& counts_;
  std::mutex mutex_;
  std::condition_variable_any wake_;
};

int play(const PlayOptions& options) {
  const MappedFile file(options.file);
  if (!AccessUnitSplitter(file.bytes()).next()) {
    throw Failure(options.file + " holds no H.264 byte stream");
  }
  MainLoop loop;
  SharedCounts counts;
  Viewer viewer(loop, counts, options.file, options.view.placement);
  Player player(file.bytes(), options.fps, viewer, counts);
  std::jthread feeder([&](const std::stop_token& stop) {
    loop.guarded([&] { player.play(stop); });
    loop.end("end of the file");
  });
  return runAndTell({"play", options.file}, options.run, loop, counts, [&] {
    feeder = {};
    viewer.stop();
    if (counts.now().decoded == 0) throw Failure("nothing in " + options.file + " can be decoded");
    if (!options.view.snapshot.empty()) viewer.snapshot(options.view.snapshot);
  });
}

}  // namespace

void addPlay(CLI::App& program, Job& chosen) {
  auto options = std::make_shared<PlayOptions>();
  auto& command =
      addCommand(program, chosen, "play", "Decode a file and show it in a window", options, play);
  command.add_option("file", options->file, "The H.264 byte stream to play")
      ->type_name("FILE.h264")
      ->required();
  command.add_option("--fps", options->fps, "Frames a second (30)")
      ->type_name("NUMBER")
      ->check(within(0.1, 1000));
  addOptions(command, options->view);
  addOptions(command, options->run);
}

}  // namespace vlm::tools
