#include "platform/macos/bridge/sample_attachments.h"

#import <ScreenCaptureKit/ScreenCaptureKit.h>

#include "platform/core_media.h"
#include "platform/macos/bridge/values.h"
#include "platform/screen_capture_kit.h"

namespace vlm::platform::bridge {

namespace {

Keys attachmentKeys() {
  static const Key keys[] = {
      {platform::SCStreamFrameInfoStatus, (CFStringRef)::SCStreamFrameInfoStatus},
      {kCMSampleAttachmentKey_NotSync, ::kCMSampleAttachmentKey_NotSync},
      {kCMSampleAttachmentKey_DisplayImmediately, ::kCMSampleAttachmentKey_DisplayImmediately}};
  return keys;
}

// The dictionary of the first sample, lent by the sample buffer; null for none.
CFMutableDictionaryRef attachmentsOf(CMSampleBufferRef sample, bool make) {
  const auto array = ::CMSampleBufferGetSampleAttachmentsArray(sample, make);
  if (array == nullptr || ::CFArrayGetCount(array) == 0) return nullptr;
  const void* const first = ::CFArrayGetValueAtIndex(array, 0);
  if (first == nullptr || ::CFGetTypeID(first) != ::CFDictionaryGetTypeID()) return nullptr;
  // The framework says that these dictionaries may be changed.
  return static_cast<CFMutableDictionaryRef>(const_cast<void*>(first));
}

}  // namespace

CFValue attachmentOf(CMSampleBufferRef sample, std::string_view key) {
  const auto constant = constantFor(attachmentKeys(), key);
  const auto attachments = attachmentsOf(sample, false);
  if (constant == nullptr || attachments == nullptr) return {};
  return fromCF(::CFDictionaryGetValue(attachments, constant));
}

bool setAttachmentOf(CMSampleBufferRef sample, std::string_view key, const CFValue& value) {
  const auto constant = constantFor(attachmentKeys(), key);
  const auto object = toCF(value);
  const auto attachments =
      constant == nullptr || !object ? nullptr : attachmentsOf(sample, true);
  if (attachments == nullptr) return false;
  ::CFDictionarySetValue(attachments, constant, object.get());
  return true;
}

}  // namespace vlm::platform::bridge
