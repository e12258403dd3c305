#pragma once

#include <cstdint>
#include <optional>
#include <string>

#include "counts.h"
#include "library.h"
#include "locked.h"
#include "main_loop.h"
#include "viewer_window.h"

namespace vlm::tools {

// The viewing side: decodes access units and shows the pictures in its own window.
class Viewer {
 public:
  Viewer(MainLoop& loop, SharedCounts& counts, const std::string& title,
         const Placement& placement);
  ~Viewer() { stop(); }
  Viewer(const Viewer&) = delete;
  Viewer& operator=(const Viewer&) = delete;

  // False when the decoder refused the unit. Any thread, one at a time.
  bool decode(const AccessUnit& unit, std::int64_t ptsNs);
  // Waits until every decoded frame has been handed to the view, or a short time when it stays
  // busy. The thread that decodes.
  void settle();
  // Delivers what is in flight and decodes nothing any more; the window stays.
  void stop();
  // Writes what is shown to a PNG file.
  void snapshot(const std::string& path);

 private:
  struct Frame {
    PixelBuffer buffer;
    Size size;
    std::int64_t ptsNs = 0;
  };
  struct Frames {
    std::optional<Frame> waiting;  // could not be shown yet
    std::optional<Frame> shown;
    bool willRetry = false;
  };

  static void onFrame(void* pixbuf, std::int32_t width, std::int32_t height, std::int64_t ptsNs,
                      void* self);

  void showNew(Frame frame);
  void showWaiting(Frames& frames);
  void countShown(std::int64_t ptsNs);

  MainLoop& loop_;
  SharedCounts& counts_;
  ViewerWindow window_;
  // Ends before the window that its view is in.
  Presenter presenter_;
  Locked<Frames> frames_;
  Decoder decoder_;
};

}  // namespace vlm::tools
