// Core Media and Core Video on the engine.
#import <CoreMedia/CoreMedia.h>
#import <CoreVideo/CoreVideo.h>

#include <cstring>
#include <vector>

#include "standin/media_objects.h"

using standin::object;

@implementation StandInPixelBuffer
@end
@implementation StandInData
@end
@implementation StandInDescription
@end
@implementation StandInSample
- (void)dealloc {
  for (id each : {(id)data, (id)image, (id)description, (id)attachments}) [each release];
  [super dealloc];
}
@end

namespace standin {

namespace {

template <class Holder, class Object>
Holder* holding(e::Ref<Object> it) {
  if (!it) return nil;
  Holder* const holder = [[Holder alloc] init];
  holder->it = std::move(it);
  return holder;
}

StandInDescription* describing(e::Ref<e::CMFormatDescription> it, OSType kind) {
  StandInDescription* const made = holding<StandInDescription>(std::move(it));
  if (made != nil) made->kind = kind;
  return made;
}

StandInDescription* of(CMFormatDescriptionRef reference) {
  return object(reference);
}
StandInSample* of(CMSampleBufferRef reference) {
  return object(reference);
}
e::CVPixelBuffer& of(CVPixelBufferRef reference) {
  return *static_cast<StandInPixelBuffer*>(object(reference))->it;
}
e::CMBlockBuffer& of(CMBlockBufferRef reference) {
  return *static_cast<StandInData*>(object(reference))->it;
}

// Writes the made object, when there is one.
template <class Reference>
OSStatus give(OSStatus status, id made, Reference* out) {
  if (status == 0) *out = reinterpret_cast<Reference>(made);
  return status;
}

}  // namespace

StandInSample* sampleOf(e::Ref<e::CMSampleBuffer> it) {
  if (!it) return nil;
  StandInSample* const made = holding<StandInSample>(it);
  made->data = holding<StandInData>(it->data);
  made->description = describing(it->description, kCMVideoCodecType_H264);
  const e::CFValue notSync = e::helpers::sampleAttachment(*it, e::kCMSampleAttachmentKey_NotSync);
  made->attachments = [[NSMutableArray alloc] initWithObjects:[NSMutableDictionary dictionary], nil];
  if (notSync == e::CFValue(true)) {
    [[made->attachments objectAtIndex:0] setObject:object(kCFBooleanTrue)
                                            forKey:object(kCMSampleAttachmentKey_NotSync)];
  }
  return made;
}

StandInPixelBuffer* pixelBufferOf(e::Ref<e::CVPixelBuffer> it) {
  return holding<StandInPixelBuffer>(std::move(it));
}

}  // namespace standin

using standin::give;
using standin::holding;
using standin::of;

extern "C" {

CMTime CMTimeMake(int64_t value, int32_t timescale) { return {value, timescale, kCMTimeFlags_Valid, 0}; }
double CMTimeGetSeconds(CMTime time) { return e::CMTimeGetSeconds(standin::toEngine(time)); }

CVReturn CVPixelBufferCreate(CFAllocatorRef, size_t width, size_t height, OSType format,
                             CFDictionaryRef, CVPixelBufferRef* out) {
  e::Ref<e::CVPixelBuffer> it;
  const auto status = e::CVPixelBufferCreate(width, height, format, {}, it);
  return give(status, standin::pixelBufferOf(std::move(it)), out);
}
OSType CVPixelBufferGetPixelFormatType(CVPixelBufferRef buffer) { return of(buffer).format(); }
size_t CVPixelBufferGetWidth(CVPixelBufferRef buffer) { return of(buffer).width(); }
size_t CVPixelBufferGetHeight(CVPixelBufferRef buffer) { return of(buffer).height(); }
size_t CVPixelBufferGetPlaneCount(CVPixelBufferRef buffer) { return of(buffer).planeCount(); }
CVReturn CVPixelBufferLockBaseAddress(CVPixelBufferRef buffer, CVPixelBufferLockFlags flags) {
  return of(buffer).lock(flags);
}
CVReturn CVPixelBufferUnlockBaseAddress(CVPixelBufferRef buffer, CVPixelBufferLockFlags flags) {
  return of(buffer).unlock(flags);
}
void* CVPixelBufferGetBaseAddressOfPlane(CVPixelBufferRef buffer, size_t plane) {
  return e::CVPixelBufferGetBaseAddressOfPlane(of(buffer), plane);
}
size_t CVPixelBufferGetBytesPerRowOfPlane(CVPixelBufferRef buffer, size_t plane) {
  return e::CVPixelBufferGetBytesPerRowOfPlane(of(buffer), plane);
}
void* CVPixelBufferGetBaseAddress(CVPixelBufferRef buffer) {
  return e::CVPixelBufferGetBaseAddress(of(buffer));
}
size_t CVPixelBufferGetBytesPerRow(CVPixelBufferRef buffer) {
  return e::CVPixelBufferGetBytesPerRow(of(buffer));
}

OSStatus CMBlockBufferCreateWithMemoryBlock(CFAllocatorRef, void*, size_t length, CFAllocatorRef,
                                            const CMBlockBufferCustomBlockSource*, size_t, size_t,
                                            CMBlockBufferFlags, CMBlockBufferRef* out) {
  e::Ref<e::CMBlockBuffer> it;
  const auto status = e::CMBlockBufferCreateWithMemoryBlock(length, it);
  return give(status, holding<StandInData>(std::move(it)), out);
}
OSStatus CMBlockBufferReplaceDataBytes(const void* bytes, CMBlockBufferRef block, size_t offset,
                                       size_t size) {
  return e::CMBlockBufferReplaceDataBytes({static_cast<const uint8_t*>(bytes), size}, of(block), offset);
}
size_t CMBlockBufferGetDataLength(CMBlockBufferRef block) {
  return e::CMBlockBufferGetDataLength(of(block));
}
OSStatus CMBlockBufferGetDataPointer(CMBlockBufferRef block, size_t offset, size_t* length,
                                     size_t* total, char** bytes) {
  std::span<const uint8_t> piece;
  const auto status = e::CMBlockBufferGetDataPointer(of(block), offset, piece);
  if (status != 0) return status;
  *length = piece.size();
  *bytes = reinterpret_cast<char*>(const_cast<uint8_t*>(piece.data()));
  if (total != nullptr) *total = CMBlockBufferGetDataLength(block);
  return 0;
}

OSStatus CMVideoFormatDescriptionCreateFromH264ParameterSets(CFAllocatorRef, size_t count,
                                                             const uint8_t* const* sets,
                                                             const size_t* sizes, int,
                                                             CMFormatDescriptionRef* out) {
  std::vector<std::span<const uint8_t>> all;
  for (size_t i = 0; i < count; ++i) all.emplace_back(sets[i], sizes[i]);
  e::Ref<e::CMFormatDescription> it;
  const auto status = e::CMVideoFormatDescriptionCreateFromH264ParameterSets(all, 4, it);
  return give(status, standin::describing(std::move(it), kCMVideoCodecType_H264), out);
}
OSStatus CMVideoFormatDescriptionGetH264ParameterSetAtIndex(CMFormatDescriptionRef description,
                                                            size_t index, const uint8_t** bytes,
                                                            size_t* size, size_t* count, int*) {
  std::span<const uint8_t> set;
  const auto& it = *of(description)->it;
  const auto status = e::CMVideoFormatDescriptionGetH264ParameterSetAtIndex(it, index, set);
  if (status != 0) return status;
  if (bytes != nullptr) *bytes = set.data();
  if (size != nullptr) *size = set.size();
  if (count != nullptr) *count = it.parameterSets.size();
  return 0;
}
OSStatus CMVideoFormatDescriptionCreateForImageBuffer(CFAllocatorRef, CVImageBufferRef image,
                                                      CMVideoFormatDescriptionRef* out) {
  e::Ref<e::CMFormatDescription> it;
  const auto status = e::CMVideoFormatDescriptionCreateForImageBuffer(of(image), it);
  return give(status, standin::describing(std::move(it), of(image).format()), out);
}
CMMediaType CMFormatDescriptionGetMediaType(CMFormatDescriptionRef description) {
  return of(description)->audio.mSampleRate > 0 ? CMMediaType{kCMMediaType_Audio} : kCMMediaType_Video;
}
uint32_t CMFormatDescriptionGetMediaSubType(CMFormatDescriptionRef description) {
  return of(description)->kind;
}
AudioStreamBasicDescription* CMAudioFormatDescriptionGetStreamBasicDescription(
    CMAudioFormatDescriptionRef description) {
  return &of(description)->audio;
}

OSStatus CMSampleBufferCreateReady(CFAllocatorRef, CMBlockBufferRef data,
                                   CMFormatDescriptionRef description, CMItemCount, CMItemCount count,
                                   const CMSampleTimingInfo* timing, CMItemCount, const size_t*,
                                   CMSampleBufferRef* out) {
  std::vector<e::CMSampleTimingInfo> times;
  for (CMItemCount i = 0; i < count; ++i) {
    times.push_back({standin::toEngine(timing[i].duration),
                     standin::toEngine(timing[i].presentationTimeStamp), {}});
  }
  e::Ref<e::CMSampleBuffer> it;
  const auto status = e::CMSampleBufferCreateReady(static_cast<StandInData*>(object(data))->it,
                                                   of(description)->it, times, {}, it);
  StandInSample* const made = holding<StandInSample>(std::move(it));
  if (made != nil) {
    made->data = [object(data) retain];
    made->description = [object(description) retain];
  }
  return give(status, made, out);
}
OSStatus CMSampleBufferCreateReadyWithImageBuffer(CFAllocatorRef, CVImageBufferRef image,
                                                  CMVideoFormatDescriptionRef description,
                                                  const CMSampleTimingInfo* timing,
                                                  CMSampleBufferRef* out) {
  e::Ref<e::CMSampleBuffer> it;
  const auto status = e::CMSampleBufferCreateReadyWithImageBuffer(
      static_cast<StandInPixelBuffer*>(object(image))->it, of(description)->it,
      {{}, standin::toEngine(timing->presentationTimeStamp), {}}, it);
  StandInSample* const made = holding<StandInSample>(std::move(it));
  if (made != nil) {
    made->image = [object(image) retain];
    made->description = [object(description) retain];
  }
  return give(status, made, out);
}
Boolean CMSampleBufferIsValid(CMSampleBufferRef sample) { return of(sample)->it->valid; }
CMBlockBufferRef CMSampleBufferGetDataBuffer(CMSampleBufferRef sample) {
  return reinterpret_cast<CMBlockBufferRef>(of(sample)->data);
}
CVImageBufferRef CMSampleBufferGetImageBuffer(CMSampleBufferRef sample) {
  return reinterpret_cast<CVImageBufferRef>(of(sample)->image);
}
CMFormatDescriptionRef CMSampleBufferGetFormatDescription(CMSampleBufferRef sample) {
  return reinterpret_cast<CMFormatDescriptionRef>(of(sample)->description);
}
CMTime CMSampleBufferGetPresentationTimeStamp(CMSampleBufferRef sample) {
  return standin::fromEngine(of(sample)->it->timing.presentationTimeStamp);
}
CMItemCount CMSampleBufferGetNumSamples(CMSampleBufferRef sample) { return of(sample)->it->frames; }
CFArrayRef CMSampleBufferGetSampleAttachmentsArray(CMSampleBufferRef reference, Boolean make) {
  StandInSample* const sample = of(reference);
  if (sample->attachments == nil && make != 0) {
    sample->attachments =
        [[NSMutableArray alloc] initWithObjects:[NSMutableDictionary dictionary], nil];
  }
  return reinterpret_cast<CFArrayRef>(sample->attachments);
}
// The frames of the sample's data as one interleaved buffer, with the sample's data as their owner.
OSStatus CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(
    CMSampleBufferRef sample, size_t* needed, AudioBufferList* list, size_t room, CFAllocatorRef,
    CFAllocatorRef, uint32_t, CMBlockBufferRef* owner) {
  if (needed != nullptr) *needed = sizeof(AudioBufferList);
  if (list == nullptr) return 0;
  if (room < sizeof(AudioBufferList)) return kCMSampleBufferError_ArrayTooSmall;
  auto& bytes = of(sample)->data->it->pieces.front();
  *list = {1, {{of(sample)->description->audio.mChannelsPerFrame, static_cast<UInt32>(bytes.size()),
                bytes.data()}}};
  *owner = reinterpret_cast<CMBlockBufferRef>([of(sample)->data retain]);
  return 0;
}

}  // extern "C"
