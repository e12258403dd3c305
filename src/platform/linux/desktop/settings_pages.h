#pragma once

#include "platform/app_kit.h"

namespace vlm::platform::desktop {

// Opens the desktop's settings page for a privacy section, and any other URL with the program that
// the user chose for it. False when nothing opens it, or the session bus does not answer in time.
bool open(const NSURL& url);

}  // namespace vlm::platform::desktop
