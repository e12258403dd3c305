#pragma once

#import <CoreMedia/CoreMedia.h>

#include <string_view>

#include "platform/cf_value.h"

namespace vlm::platform::bridge {

// The attachment of the first sample under one of the headers' keys; null for none.
CFValue attachmentOf(CMSampleBufferRef sample, std::string_view key);
// False when the sample can have no attachments, or not this one.
bool setAttachmentOf(CMSampleBufferRef sample, std::string_view key, const CFValue& value);

}  // namespace vlm::platform::bridge
