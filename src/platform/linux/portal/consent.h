#pragma once

#include <string>

#include "platform/mutex.h"

namespace vlm::platform::portal {

// The token by which the desktop knows what a person agreed to share. It is kept for the life of
// the process, so that no person is asked twice, and beyond that only where the host names a file
// of its own by VLM_PORTAL_TOKEN_FILE. Any thread.
class Consent {
 public:
  static Consent& shared();

  // Empty until a person agreed.
  std::string token() VLM_EXCLUDES(mutex_);
  // Each use of a token gives another one; none takes the consent back.
  void replace(const std::string& token) VLM_EXCLUDES(mutex_);

 private:
  Mutex mutex_;
  std::string token_ VLM_GUARDED_BY(mutex_);
};

}  // namespace vlm::platform::portal
