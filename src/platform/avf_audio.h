#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string_view>

#include "platform/core_audio.h"
#include "platform/foundation.h"

namespace vlm::platform {

enum class AVAudioCommonFormat : std::uint32_t { other = 0, pcmFloat32 = 1 };

// What the samples of a buffer or a node are. Never changes. Any thread.
class AVAudioFormat {
 public:
  // Null when there is no such format: more than two channels need a layout, which this does not
  // give.
  static std::shared_ptr<const AVAudioFormat> initWithCommonFormat(AVAudioCommonFormat format,
                                                                   double sampleRate,
                                                                   std::uint32_t channels,
                                                                   bool interleaved);
  virtual ~AVAudioFormat() = default;
  virtual AVAudioCommonFormat commonFormat() const = 0;
  // Both may be 0, where there is no device.
  virtual double sampleRate() const = 0;
  virtual std::uint32_t channelCount() const = 0;
  virtual bool isInterleaved() const = 0;
};
// Shared by all that is made with the format. Null makes nothing.
using AVAudioFormatPtr = std::shared_ptr<const AVAudioFormat>;

// Samples in memory. `frameLength` of the `frameCapacity` frames hold any.
class AVAudioPCMBuffer {
 public:
  // Null when it can't be made.
  static std::shared_ptr<AVAudioPCMBuffer> initWithPCMFormat(AVAudioFormatPtr format,
                                                             std::uint32_t frameCapacity);
  virtual ~AVAudioPCMBuffer() = default;
  virtual const AVAudioFormat& format() const = 0;
  virtual std::uint32_t frameCapacity() const = 0;
  virtual std::uint32_t frameLength() const = 0;
  virtual void setFrameLength(std::uint32_t frames) = 0;
  // The first sample of a channel; the next one follows it, or comes after those of the other
  // channels when they are interleaved. Null for a channel that is not there, or without floats.
  virtual float* floatChannelData(std::uint32_t channel) = 0;
};

enum class AVAudioConverterInputStatus : std::int64_t { haveData = 0, noDataNow = 1 };

// Hands over the next piece of input, or says that there is none.
using AVAudioConverterInputBlock =
    std::function<std::shared_ptr<AVAudioPCMBuffer>(AVAudioConverterInputStatus& status)>;

// Converts rate and channels, keeping its state from one call to the next.
class AVAudioConverter {
 public:
  // Null for formats between which there is no conversion.
  static std::shared_ptr<AVAudioConverter> initFromFormat(AVAudioFormatPtr from,
                                                          AVAudioFormatPtr to);
  virtual ~AVAudioConverter() = default;
  // Fills `output` and sets its frame length. Nothing, or what went wrong.
  virtual std::optional<NSError> convertToBuffer(AVAudioPCMBuffer& output,
                                                 const AVAudioConverterInputBlock& input) = 0;
};

// Calls with the samples that the input device gave, on a thread of the engine.
using AVAudioNodeTapBlock = std::function<void(const std::shared_ptr<AVAudioPCMBuffer>& buffer)>;

class AVAudioInputNode {
 public:
  virtual ~AVAudioInputNode() = default;
  virtual AudioUnit* audioUnit() = 0;                                 // lent; may be null
  virtual AVAudioFormatPtr inputFormatForBus(std::uint32_t bus) = 0;  // may be null
  // `bufferSize` frames for each call are a wish. Nothing when the tap is installed, else why not.
  virtual std::optional<NSError> installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                                 AVAudioFormatPtr format,
                                                 AVAudioNodeTapBlock block) = 0;
  // No block runs after this but one that this is called from.
  virtual void removeTapOnBus(std::uint32_t bus) = 0;
};

class AVAudioOutputNode {
 public:
  virtual ~AVAudioOutputNode() = default;
  virtual AudioUnit* audioUnit() = 0;  // lent; may be null
};

// Fills the buffers with `frames` frames each, on the engine's real-time thread: it must not wait,
// allocate or log. The first argument may be set to say that all is silence.
using AVAudioSourceNodeRenderBlock =
    std::function<OSStatus(bool& isSilence, std::uint32_t frames, AudioBufferList buffers)>;

class AVAudioSourceNode {
 public:
  // Null when it can't be made.
  static std::shared_ptr<AVAudioSourceNode> initWithFormat(AVAudioFormatPtr format,
                                                           AVAudioSourceNodeRenderBlock block);
  virtual ~AVAudioSourceNode() = default;
};

// One graph of nodes between devices. Used by one thread at a time.
class AVAudioEngine {
 public:
  static std::shared_ptr<AVAudioEngine> make();
  virtual ~AVAudioEngine() = default;
  // Lent: they live as long as the engine.
  virtual AVAudioInputNode& inputNode() = 0;
  virtual AVAudioOutputNode& outputNode() = 0;
  virtual void attachNode(std::shared_ptr<AVAudioSourceNode> node) = 0;
  // connect:to:format: with the mainMixerNode. Nothing when they are connected, else why not.
  virtual std::optional<NSError> connectToMainMixer(AVAudioSourceNode& node,
                                                    AVAudioFormatPtr format) = 0;
  virtual void prepare() = 0;
  // Nothing when the engine runs, else why it does not.
  virtual std::optional<NSError> start() = 0;
  // No block runs after this.
  virtual void stop() = 0;
};

// Plays one sound file on the system's default output. Used by one thread at a time.
class AVAudioPlayer {
 public:
  virtual ~AVAudioPlayer() = default;
  virtual bool prepareToPlay() = 0;  // false: play() will try again
  virtual bool play() = 0;
  virtual void stop() = 0;  // the position stays
  virtual void setVolume(float volume) = 0;
  virtual void setNumberOfLoops(std::int64_t loops) = 0;  // repetitions; -1 for endless
  virtual double currentTime() = 0;                       // seconds
  virtual void setCurrentTime(double seconds) = 0;
  virtual double duration() = 0;
  virtual bool isPlaying() = 0;
};

// Ours, on top of the operations that their comments name.
namespace helpers {

// AVAudioPlayer's initWithContentsOfURL:error: with NSURL's fileURLWithPath:. Null for a file that
// can't be opened or decoded.
std::shared_ptr<AVAudioPlayer> audioPlayerOfFile(std::string_view path);

}  // namespace helpers

}  // namespace vlm::platform
