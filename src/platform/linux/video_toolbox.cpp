// Not served yet: no session can be made.
#include "platform/video_toolbox.h"

namespace vlm::platform {

OSStatus VTCompressionSessionCreate(std::int32_t, std::int32_t, CMVideoCodecType, const CFValue&,
                                    Ref<VTCompressionSession>&) {
  return kVTAllocationFailedErr;
}
OSStatus VTSessionSetProperty(VTCompressionSession&, std::string_view, const CFValue&) {
  return kVTInvalidSessionErr;
}
OSStatus VTCompressionSessionPrepareToEncodeFrames(VTCompressionSession&) {
  return kVTInvalidSessionErr;
}
OSStatus VTCompressionSessionEncodeFrameWithOutputHandler(VTCompressionSession&, Ref<CVPixelBuffer>,
                                                          CMTime, CMTime, const CFValue&,
                                                          VTCompressionOutputHandler) {
  return kVTInvalidSessionErr;
}
OSStatus VTCompressionSessionCompleteFrames(VTCompressionSession&, CMTime) {
  return kVTInvalidSessionErr;
}
void VTCompressionSessionInvalidate(VTCompressionSession&) {}

OSStatus VTDecompressionSessionCreate(Ref<CMFormatDescription>, const CFValue&,
                                      Ref<VTDecompressionSession>&) {
  return kVTAllocationFailedErr;
}
OSStatus VTDecompressionSessionDecodeFrameWithOutputHandler(VTDecompressionSession&,
                                                            Ref<CMSampleBuffer>, VTDecodeFrameFlags,
                                                            VTDecompressionOutputHandler) {
  return kVTInvalidSessionErr;
}
OSStatus VTDecompressionSessionWaitForAsynchronousFrames(VTDecompressionSession&) {
  return kVTInvalidSessionErr;
}
void VTDecompressionSessionInvalidate(VTDecompressionSession&) {}

}  // namespace vlm::platform
