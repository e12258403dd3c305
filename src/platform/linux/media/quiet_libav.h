#pragma once

namespace vlm::platform::media {

// While one lives libav writes no lines to standard error, which is the host's. Its readers of
// files have no other switch than the one for the whole process; what a host set it to is set
// again.
class QuietLibav {
 public:
  QuietLibav();
  ~QuietLibav();
  QuietLibav(const QuietLibav&) = delete;
  QuietLibav& operator=(const QuietLibav&) = delete;
};

}  // namespace vlm::platform::media
