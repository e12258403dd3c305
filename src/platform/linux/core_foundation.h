#pragma once

#include "platform/core_foundation.h"
#include "platform/linux/glib/descriptor_source.h"

namespace vlm::platform {

class CFRunLoopSource final : public glib::DescriptorSource {
 public:
  using DescriptorSource::DescriptorSource;
};

}  // namespace vlm::platform
