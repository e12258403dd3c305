#pragma once

#include <optional>
#include <span>
#include <string>
#include <vector>

#include "bench/quality/libav.h"
#include "bench/quality/picture.h"

namespace vlm::bench {

struct Quality {
  double psnr = 0;  // of all planes, at most 99
  double ssim = 0;
};

// Decodes a stream and compares what it shows with the source, by FFmpeg's filters psnr and ssim.
class Judge {
 public:
  Judge(std::size_t width, std::size_t height);

  // An access unit; from then on its picture is shown.
  void show(std::span<const std::uint8_t> unit);
  // Compares what is shown with `source`. Results come in order, at the latest with finish().
  void compare(const Picture& source);
  // The results of all comparisons.
  std::vector<Quality> finish();

  // Writes what is shown to a file, as packed 4:2:0 planes.
  void save(const std::string& file) const;

 private:
  AVFilterContext* addSource(const char* name, std::size_t width, std::size_t height);
  void collect();

  CodecContext decoder_;
  Frame shown_;
  FilterGraph graph_;
  AVFilterContext* stream_ = nullptr;
  AVFilterContext* source_ = nullptr;
  AVFilterContext* sink_ = nullptr;
  std::int64_t compared_ = 0;
  std::vector<Quality> results_;
};

// Of one access unit that holds a whole picture.
Quality judgeOne(std::span<const std::uint8_t> unit, const Picture& source);

}  // namespace vlm::bench
