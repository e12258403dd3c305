// The two operations of core_media.h that the tests use; its other ones need more of Core Media than
// the stand-ins have.
#include "platform/core_media.h"
#include "platform/macos/bridge/native.h"
#include "platform/macos/bridge/sample_attachments.h"

namespace vlm::platform::helpers {

CFValue sampleAttachment(CMSampleBuffer& sample, std::string_view key) {
  return bridge::attachmentOf(bridge::native(sample), key);
}

bool setSampleAttachment(CMSampleBuffer& sample, std::string_view key, CFValue value) {
  return bridge::setAttachmentOf(bridge::native(sample), key, value);
}

}  // namespace vlm::platform::helpers
