#include "platform/linux/media/quiet_libav.h"

extern "C" {
#include <libavutil/log.h>
}

#include "platform/mutex.h"

namespace vlm::platform::media {
namespace {

struct Level {
  Mutex mutex;
  int quietOnes VLM_GUARDED_BY(mutex) = 0;
  int before VLM_GUARDED_BY(mutex) = 0;
};

Level& level() {
  static auto* const only = new Level();
  return *only;
}

}  // namespace

QuietLibav::QuietLibav() {
  const MutexLock lock(level().mutex);
  if (level().quietOnes++ > 0) return;
  level().before = av_log_get_level();
  av_log_set_level(AV_LOG_QUIET);
}

QuietLibav::~QuietLibav() {
  const MutexLock lock(level().mutex);
  if (--level().quietOnes > 0) return;
  // Unless the host has chosen another meanwhile.
  if (av_log_get_level() == AV_LOG_QUIET) av_log_set_level(level().before);
}

}  // namespace vlm::platform::media
