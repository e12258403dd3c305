#pragma once

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "platform/avf_audio.h"
#include "platform/cf_value.h"
#include "platform/mutex.h"
#include "platform/portable/audio_format.h"

namespace vlm::platform::scripted {

// An engine that the library has made; the test plays the devices behind it.
class ScriptedEngine final : public AVAudioEngine {
 public:
  ScriptedEngine();

  AVAudioInputNode& inputNode() override { return input_; }
  AVAudioOutputNode& outputNode() override { return output_; }
  void attachNode(std::shared_ptr<AVAudioSourceNode> node) override;
  std::optional<NSError> connectToMainMixer(AVAudioSourceNode& node,
                                            AVAudioFormatPtr format) override;
  void prepare() override;
  std::optional<NSError> start() override;
  void stop() override VLM_EXCLUDES(mutex_);

  // What the microphone gives, while the engine runs and a tap is installed.
  void tap(const std::shared_ptr<AVAudioPCMBuffer>& buffer) VLM_EXCLUDES(mutex_);
  // What the output asks for, while the engine runs; false when nobody answered.
  bool render(std::uint32_t frames, AudioBufferList buffers) VLM_EXCLUDES(mutex_);
  // For a call that comes late: the block as the library gave it.
  AVAudioNodeTapBlock tapBlock() VLM_EXCLUDES(mutex_);
  AVAudioSourceNodeRenderBlock renderBlock() VLM_EXCLUDES(mutex_);

 private:
  class Unit final : public AudioUnit {
   public:
    explicit Unit(const char* name) : name_(name) {}
    OSStatus setProperty(std::uint32_t property, std::uint32_t scope, std::uint32_t element,
                         std::uint32_t value) override;

   private:
    const char* const name_;
  };

  class Input final : public AVAudioInputNode {
   public:
    explicit Input(ScriptedEngine& engine) : engine_(engine) {}
    AudioUnit* audioUnit() override;
    AVAudioFormatPtr inputFormatForBus(std::uint32_t bus) override;
    std::optional<NSError> installTapOnBus(std::uint32_t bus, std::uint32_t bufferSize,
                                           AVAudioFormatPtr format,
                                           AVAudioNodeTapBlock block) override;
    void removeTapOnBus(std::uint32_t bus) override;

   private:
    ScriptedEngine& engine_;
    Unit unit_{"input"};
  };

  class Output final : public AVAudioOutputNode {
   public:
    AudioUnit* audioUnit() override;

   private:
    Unit unit_{"output"};
  };

  Input input_;
  Output output_;
  std::shared_ptr<AVAudioSourceNode> source_;
  Mutex mutex_;
  AVAudioNodeTapBlock tap_ VLM_GUARDED_BY(mutex_);
  AVAudioSourceNodeRenderBlock render_ VLM_GUARDED_BY(mutex_);
  bool running_ VLM_GUARDED_BY(mutex_) = false;
};

// A player that the library has made. It plays no file: the test says where it is.
class ScriptedPlayer final : public AVAudioPlayer {
 public:
  explicit ScriptedPlayer(double duration) : duration_(duration) {}

  bool prepareToPlay() override;
  bool play() override;
  void stop() override;
  void setVolume(float volume) override;
  void setNumberOfLoops(std::int64_t loops) override;
  double currentTime() override { return time; }
  void setCurrentTime(double seconds) override;
  double duration() override { return duration_; }
  bool isPlaying() override { return playing; }

  double time = 0;
  bool playing = false;

 private:
  const double duration_;
};

// The machine's sound.
struct AudioStage {
  struct Device {
    AudioDeviceID number = 0;
    // The channels of each buffer of the stream configuration.
    std::vector<std::uint32_t> inputs;
    std::vector<std::uint32_t> outputs;
    // Usually texts.
    CFValue name;
    CFValue uid;
  };
  std::vector<Device> devices;
  PcmShape inputFormat{AVAudioCommonFormat::pcmFloat32, 48000, 2, false};
  bool hasUnits = true;
  // The duration of each file that can be played.
  std::map<std::string, double, std::less<>> files;
  // What has been made so far; an entry is gone when the library has let go of it.
  std::vector<std::weak_ptr<ScriptedEngine>> engines;
  std::vector<std::weak_ptr<ScriptedPlayer>> players;
};

std::string describe(const AVAudioFormatPtr& format);  // 48000.0 x 2

}  // namespace vlm::platform::scripted
