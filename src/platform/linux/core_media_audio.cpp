// Buffers of audio need nothing of the system.
#include "platform/portable/fallible.h"

namespace vlm::platform {

OSStatus CMSampleBufferGetAudioBufferListWithRetainedBlockBuffer(CMSampleBuffer& sample,
                                                                 std::span<AudioBuffer> list,
                                                                 std::size_t& count,
                                                                 Ref<CMBlockBuffer>& block) {
  return portable::audioBufferList(sample, list, count, block);
}

}  // namespace vlm::platform
