#pragma once

#include <cstdint>
#include <functional>
#include <string_view>

#include "platform/cf_value.h"
#include "platform/core_media.h"
#include "platform/core_video.h"
#include "platform/foundation.h"

namespace vlm::platform {

// ---- Compression -------------------------------------------------------------------------------

// An encoder. Frames come out in the order in which they went in, on a thread of the session.
// Its operations are called by one thread at a time.
class VTCompressionSession;

inline constexpr std::string_view kVTVideoEncoderSpecification_EnableLowLatencyRateControl =
    "EnableLowLatencyRateControl";
inline constexpr std::string_view kVTCompressionPropertyKey_RealTime = "RealTime";
inline constexpr std::string_view kVTCompressionPropertyKey_AllowFrameReordering =
    "AllowFrameReordering";
inline constexpr std::string_view kVTCompressionPropertyKey_ProfileLevel = "ProfileLevel";
inline constexpr std::string_view kVTCompressionPropertyKey_ExpectedFrameRate = "ExpectedFrameRate";
inline constexpr std::string_view kVTCompressionPropertyKey_MaxKeyFrameInterval =
    "MaxKeyFrameInterval";
inline constexpr std::string_view kVTCompressionPropertyKey_MaxKeyFrameIntervalDuration =
    "MaxKeyFrameIntervalDuration";
inline constexpr std::string_view kVTCompressionPropertyKey_MaxAllowedFrameQP = "MaxAllowedFrameQP";
// Bits a second, averaged.
inline constexpr std::string_view kVTCompressionPropertyKey_AverageBitRate = "AverageBitRate";
// An array of two numbers: at most so many bytes in any window of so many seconds.
inline constexpr std::string_view kVTCompressionPropertyKey_DataRateLimits = "DataRateLimits";
inline constexpr std::string_view kVTProfileLevel_H264_Main_AutoLevel = "H264_Main_AutoLevel";
inline constexpr std::string_view kVTEncodeFrameOptionKey_ForceKeyFrame = "ForceKeyFrame";

inline constexpr OSStatus kVTPropertyNotSupportedErr = -12900;
inline constexpr OSStatus kVTParameterErr = -12902;
inline constexpr OSStatus kVTInvalidSessionErr = -12903;
inline constexpr OSStatus kVTAllocationFailedErr = -12904;
inline constexpr OSStatus kVTVideoDecoderBadDataErr = -12909;
inline constexpr OSStatus kVTVideoDecoderMalfunctionErr = -12911;
inline constexpr OSStatus kVTVideoEncoderMalfunctionErr = -12912;

using VTEncodeInfoFlags = std::uint32_t;
inline constexpr VTEncodeInfoFlags kVTEncodeInfo_FrameDropped = 2;

// Called once for every frame that was accepted: status 0 and a sample, status 0 and none for a
// frame that the session dropped, or another status. The sample's data is length-prefixed with 4
// bytes; its description holds the parameter sets.
using VTCompressionOutputHandler =
    std::function<void(OSStatus status, VTEncodeInfoFlags infoFlags, Ref<CMSampleBuffer> sample)>;

// `encoderSpecification` is null or a dictionary. `out` is written only on success.
OSStatus VTCompressionSessionCreate(std::int32_t width, std::int32_t height, CMVideoCodecType codec,
                                    const CFValue& encoderSpecification,
                                    Ref<VTCompressionSession>& out);
// Before the first frame, and for the bit rate at any time.
OSStatus VTSessionSetProperty(VTCompressionSession& session, std::string_view key,
                              const CFValue& value);
OSStatus VTCompressionSessionPrepareToEncodeFrames(VTCompressionSession& session);
// Submits a frame in '420v', '420f' or 'BGRA' and returns without waiting for it. The session
// keeps the buffer as long as it needs it. `frameProperties` is null or a dictionary. When the
// status is not 0, the handler is not called.
OSStatus VTCompressionSessionEncodeFrameWithOutputHandler(
    VTCompressionSession& session, Ref<CVPixelBuffer> image, CMTime presentationTimeStamp,
    CMTime duration, const CFValue& frameProperties, VTCompressionOutputHandler handler);
// Waits until the handlers of all frames up to this time (all frames, for an invalid time) have
// returned.
OSStatus VTCompressionSessionCompleteFrames(VTCompressionSession& session, CMTime until);
// Ends the session; every later operation answers kVTInvalidSessionErr.
void VTCompressionSessionInvalidate(VTCompressionSession& session);

// ---- Decompression -----------------------------------------------------------------------------

// A decoder for one format description. Its operations are called by one thread at a time.
class VTDecompressionSession;

using VTDecodeFrameFlags = std::uint32_t;
inline constexpr VTDecodeFrameFlags kVTDecodeFrame_EnableAsynchronousDecompression = 1;
inline constexpr VTDecodeFrameFlags kVTDecodeFrame_1xRealTimePlayback = 4;
using VTDecodeInfoFlags = std::uint32_t;

// Called for every frame that was accepted, once and in order, on a thread of the session: status 0
// and an image, status 0 and none for a frame that was dropped, or another status. Frames in flight
// when the session ends are called for or not; a handler that will not be called is destroyed.
using VTDecompressionOutputHandler =
    std::function<void(OSStatus status, VTDecodeInfoFlags infoFlags, Ref<CVPixelBuffer> image,
                       CMTime presentationTimeStamp, CMTime duration)>;

// `destinationAttributes` is a dictionary of pixel buffer attributes. Sessions know nothing of each
// other: what two deliver has no order. `out` is written only on success.
OSStatus VTDecompressionSessionCreate(Ref<CMFormatDescription> description,
                                      const CFValue& destinationAttributes,
                                      Ref<VTDecompressionSession>& out);
// Submits a sample and returns without waiting for it to be decoded; when very many wait already,
// the platform may wait a moment for room. When the status is not 0, the handler is not called.
OSStatus VTDecompressionSessionDecodeFrameWithOutputHandler(VTDecompressionSession& session,
                                                            Ref<CMSampleBuffer> sample,
                                                            VTDecodeFrameFlags flags,
                                                            VTDecompressionOutputHandler handler);
// Waits until the handlers of all submitted frames have returned. Not after the session's end.
OSStatus VTDecompressionSessionWaitForAsynchronousFrames(VTDecompressionSession& session);
// Ends the session without waiting for frames in flight.
void VTDecompressionSessionInvalidate(VTDecompressionSession& session);

}  // namespace vlm::platform
