#pragma once

#import <ApplicationServices/ApplicationServices.h>
#import <CoreGraphics/CoreGraphics.h>
#import <CoreMedia/CoreMedia.h>
#import <CoreVideo/CoreVideo.h>
#import <VideoToolbox/VideoToolbox.h>

#include "platform/application_services.h"
#include "platform/cg_event.h"
#include "platform/core_foundation.h"
#include "platform/core_graphics.h"
#include "platform/core_media.h"
#include "platform/core_video.h"
#include "platform/ref.h"
#include "platform/video_toolbox.h"

namespace vlm::platform::bridge {

// The headers' opaque types are the frameworks' own objects: a reference to one is the framework's
// reference, and its address the same.
template <class T>
struct NativeOf;
template <>
struct NativeOf<AXUIElement> {
  using type = AXUIElementRef;
};
template <>
struct NativeOf<CFRunLoopSource> {
  using type = CFRunLoopSourceRef;
};
template <>
struct NativeOf<CGEvent> {
  using type = CGEventRef;
};
template <>
struct NativeOf<CMBlockBuffer> {
  using type = CMBlockBufferRef;
};
template <>
struct NativeOf<CMFormatDescription> {
  using type = CMFormatDescriptionRef;
};
template <>
struct NativeOf<CMSampleBuffer> {
  using type = CMSampleBufferRef;
};
template <>
struct NativeOf<CVPixelBuffer> {
  using type = CVPixelBufferRef;
};
template <>
struct NativeOf<VTCompressionSession> {
  using type = VTCompressionSessionRef;
};
template <>
struct NativeOf<VTDecompressionSession> {
  using type = VTDecompressionSessionRef;
};

template <class T>
typename NativeOf<T>::type native(const T* object) {
  return reinterpret_cast<typename NativeOf<T>::type>(const_cast<T*>(object));
}
template <class T>
typename NativeOf<T>::type native(const T& object) {
  return native(&object);
}
template <class T>
typename NativeOf<T>::type native(const Ref<T>& object) {
  return native(object.get());
}

// Lent, as it came from the framework.
template <class T>
T* lent(typename NativeOf<T>::type object) {
  return reinterpret_cast<T*>(const_cast<void*>(static_cast<const void*>(object)));
}
// Takes over the reference that a framework's Create or Copy function gave.
template <class T>
Ref<T> adopted(typename NativeOf<T>::type object) {
  return Ref<T>::adopting(lent<T>(object));
}
template <class T>
Ref<T> retained(typename NativeOf<T>::type object) {
  return Ref<T>::retaining(lent<T>(object));
}

inline ::CGPoint toNative(CGPoint point) {
  return {point.x, point.y};
}
inline ::CGSize toNative(CGSize size) {
  return {size.width, size.height};
}
inline ::CGRect toNative(const CGRect& rect) {
  return {toNative(rect.origin), toNative(rect.size)};
}
inline CGPoint fromNative(::CGPoint point) {
  return {point.x, point.y};
}
inline CGSize fromNative(::CGSize size) {
  return {size.width, size.height};
}
inline CGRect fromNative(const ::CGRect& rect) {
  return {fromNative(rect.origin), fromNative(rect.size)};
}

inline ::CMTime toNative(CMTime time) {
  return time.timescale == 0 ? ::kCMTimeInvalid : ::CMTimeMake(time.value, time.timescale);
}
inline ::CMSampleTimingInfo toNative(const CMSampleTimingInfo& timing) {
  return {toNative(timing.duration), toNative(timing.presentationTimeStamp),
          toNative(timing.decodeTimeStamp)};
}
// Times that are no number (indefinite, infinite) have no place in the headers: they are invalid.
inline CMTime fromNative(const ::CMTime& time) {
  constexpr auto kNumber = ::kCMTimeFlags_Valid;
  const auto kind = time.flags & (kNumber | ::kCMTimeFlags_ImpliedValueFlagsMask);
  return kind == kNumber ? CMTime{time.value, time.timescale} : CMTime{};
}

}  // namespace vlm::platform::bridge
