#include "platform/macos/bridge/audio_nodes.h"

#include <array>
#include <memory>
#include <utility>

#include "platform/macos/bridge/audio_buffer.h"
#include "platform/macos/bridge/guard.h"

namespace vlm::platform::bridge {

namespace {

constexpr OSStatus kParameterError = -50;

// Describes the framework's buffers to the block. On the engine's real-time thread: it sends no
// message and allocates nothing.
OSStatus render(const AVAudioSourceNodeRenderBlock& block, BOOL* isSilence, std::uint32_t frames,
                const ::AudioBufferList* list) {
  std::array<AudioBuffer, 64> buffers;
  if (list->mNumberBuffers > buffers.size()) return kParameterError;
  for (std::size_t i = 0; i < list->mNumberBuffers; ++i) {
    const auto& buffer = list->mBuffers[i];
    buffers[i] = {buffer.mNumberChannels, buffer.mDataByteSize, buffer.mData};
  }
  bool silence = *isSilence != 0;
  const auto status = block(silence, frames, {buffers.data(), list->mNumberBuffers});
  *isSilence = silence;
  return status;
}

}  // namespace

AudioUnit* IoNode::unit() {
  if (!unit_) {
    ::AudioUnit native = nullptr;
    guarded([&] { native = [node_.get() audioUnit]; });
    if (native != nullptr) unit_.emplace(native);
  }
  return unit_ ? &*unit_ : nullptr;
}

void Tap::deliver(const std::shared_ptr<AVAudioPCMBuffer>& buffer) {
  const MutexLock lock(calling_);
  if (closed_) return;
  const RunningCall::Scope scope(running_);
  block_(buffer);
}

void Tap::close() {
  closed_ = true;
  if (!running_.isHere()) const MutexLock lock(calling_);
}

AVAudioFormatPtr InputNode::inputFormatForBus(std::uint32_t bus) {
  AVAudioFormatPtr format;
  guarded([&] { format = fromNative([node_.native() inputFormatForBus:bus]); });
  return format;
}

std::optional<NSError> InputNode::installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                                  AVAudioFormatPtr format,
                                                  AVAudioNodeTapBlock block) {
  if (node_.native() == nil) return NSError{"there is no input"};
  const auto tap = std::make_shared<Tap>(std::move(block));
  const auto handler = ^(::AVAudioPCMBuffer* buffer, AVAudioTime*) {
    @autoreleasepool {
      tap->deliver(std::make_shared<PcmBuffer>(Objc<::AVAudioPCMBuffer>::retaining(buffer)));
    }
  };
  const auto thrown = guarded([&] {
    [node_.native() installTapOnBus:bus
                         bufferSize:bufferSize
                             format:native(format)
                              block:handler];
  });
  if (!thrown) taps_[bus] = tap;
  return thrown;
}

void InputNode::removeTapOnBus(std::uint32_t bus) {
  guarded([&] { [node_.native() removeTapOnBus:bus]; });
  // The framework does not say whether its last call has returned by then.
  if (const auto tap = taps_.extract(bus)) tap.mapped()->close();
}

std::shared_ptr<SourceNode> makeSourceNode(const AVAudioFormatPtr& format,
                                           AVAudioSourceNodeRenderBlock block) {
  const auto shared = std::make_shared<const AVAudioSourceNodeRenderBlock>(std::move(block));
  if (format == nullptr) return nullptr;
  const auto renderer = ^OSStatus(BOOL* isSilence, const AudioTimeStamp*, AVAudioFrameCount frames,
                                  ::AudioBufferList* list) {
    return render(*shared, isSilence, frames, list);
  };
  Objc<::AVAudioSourceNode> node;
  guarded([&] {
    node = Objc<::AVAudioSourceNode>::adopting(
        [[::AVAudioSourceNode alloc] initWithFormat:native(format) renderBlock:renderer]);
  });
  return node ? std::make_shared<SourceNode>(std::move(node)) : nullptr;
}

}  // namespace vlm::platform::bridge
