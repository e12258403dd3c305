#include "platform/avf_audio.h"

#import <AVFAudio/AVFAudio.h>
#include <utility>

#include "platform/macos/bridge/audio_buffer.h"
#include "platform/macos/bridge/audio_nodes.h"
#include "platform/macos/bridge/guard.h"
#include "platform/macos/bridge/objc.h"
#include "platform/macos/bridge/values.h"

namespace vlm::platform {

using bridge::guarded;
using bridge::Objc;

namespace {

static_assert(static_cast<int>(AVAudioConverterInputStatus::haveData) ==
              ::AVAudioConverterInputStatus_HaveData);
static_assert(static_cast<int>(AVAudioConverterInputStatus::noDataNow) ==
              ::AVAudioConverterInputStatus_NoDataNow);

class Converter : public AVAudioConverter {
 public:
  explicit Converter(Objc<::AVAudioConverter> converter) : converter_(std::move(converter)) {}

  std::optional<NSError> convertToBuffer(AVAudioPCMBuffer& output,
                                         const AVAudioConverterInputBlock& input) override {
    // The framework reads a piece after the block has returned it.
    std::vector<std::shared_ptr<AVAudioPCMBuffer>> pieces;
    auto* const kept = &pieces;
    const auto* const next = &input;
    std::optional<NSError> failure;
    const auto thrown = guarded([&] {
      ::NSError* error = nil;
      const auto result = [converter_.get()
             convertToBuffer:static_cast<bridge::PcmBuffer&>(output).native()
                       error:&error
          withInputFromBlock:^AVAudioBuffer*(AVAudioPacketCount,
                                             ::AVAudioConverterInputStatus* status) {
            auto answer = AVAudioConverterInputStatus::noDataNow;
            auto piece = (*next)(answer);
            *status = static_cast<::AVAudioConverterInputStatus>(answer);
            if (piece == nullptr) return nil;
            kept->push_back(std::move(piece));
            return static_cast<bridge::PcmBuffer&>(*kept->back()).native();
          }];
      if (result == ::AVAudioConverterOutputStatus_Error) {
        failure = bridge::fromError(error).value_or(NSError{"the conversion failed"});
      }
    });
    return thrown ? thrown : failure;
  }

 private:
  const Objc<::AVAudioConverter> converter_;
};

class Engine : public AVAudioEngine {
 public:
  explicit Engine(Objc<::AVAudioEngine> engine) : engine_(std::move(engine)) {}

  AVAudioInputNode& inputNode() override {
    if (!input_) {
      Objc<AVAudioIONode> node;
      guarded([&] { node = Objc<AVAudioIONode>::retaining([engine_.get() inputNode]); });
      input_.emplace(std::move(node));
    }
    return *input_;
  }
  AVAudioOutputNode& outputNode() override {
    if (!output_) {
      Objc<AVAudioIONode> node;
      guarded([&] { node = Objc<AVAudioIONode>::retaining([engine_.get() outputNode]); });
      output_.emplace(std::move(node));
    }
    return *output_;
  }
  void attachNode(std::shared_ptr<AVAudioSourceNode> node) override {
    guarded([&] { [engine_.get() attachNode:native(*node)]; });
  }
  std::optional<NSError> connectToMainMixer(AVAudioSourceNode& node,
                                            AVAudioFormatPtr format) override {
    return guarded([&] {
      [engine_.get() connect:native(node)
                          to:[engine_.get() mainMixerNode]
                      format:bridge::native(format)];
    });
  }
  void prepare() override {
    guarded([&] { [engine_.get() prepare]; });
  }
  std::optional<NSError> start() override {
    std::optional<NSError> refusal;
    const auto thrown = guarded([&] {
      ::NSError* error = nil;
      if ([engine_.get() startAndReturnError:&error]) return;
      refusal = bridge::fromError(error).value_or(NSError{"the engine did not start"});
    });
    return thrown ? thrown : refusal;
  }
  void stop() override {
    guarded([&] { [engine_.get() stop]; });
  }

 private:
  static ::AVAudioSourceNode* native(AVAudioSourceNode& node) {
    return static_cast<bridge::SourceNode&>(node).native();
  }

  const Objc<::AVAudioEngine> engine_;
  std::optional<bridge::InputNode> input_;
  std::optional<bridge::OutputNode> output_;
};

class Player : public AVAudioPlayer {
 public:
  explicit Player(Objc<::AVAudioPlayer> player) : player_(std::move(player)) {}
  bool prepareToPlay() override {
    return answer(false, [&] { return static_cast<bool>([player_.get() prepareToPlay]); });
  }
  bool play() override {
    return answer(false, [&] { return static_cast<bool>([player_.get() play]); });
  }
  void stop() override {
    guarded([&] { [player_.get() stop]; });
  }
  void setVolume(float volume) override {
    guarded([&] { [player_.get() setVolume:volume]; });
  }
  void setNumberOfLoops(std::int64_t loops) override {
    guarded([&] { [player_.get() setNumberOfLoops:static_cast<NSInteger>(loops)]; });
  }
  double currentTime() override {
    return answer(0.0, [&] { return [player_.get() currentTime]; });
  }
  void setCurrentTime(double seconds) override {
    guarded([&] { [player_.get() setCurrentTime:seconds]; });
  }
  double duration() override {
    return answer(0.0, [&] { return [player_.get() duration]; });
  }
  bool isPlaying() override {
    return answer(false, [&] { return static_cast<bool>([player_.get() isPlaying]); });
  }

 private:
  template <class Value, class Question>
  static Value answer(Value otherwise, Question&& question) {
    Value value = otherwise;
    guarded([&] { value = question(); });
    return value;
  }

  const Objc<::AVAudioPlayer> player_;
};

}  // namespace

AVAudioFormatPtr AVAudioFormat::initWithCommonFormat(AVAudioCommonFormat format, double sampleRate,
                                                     std::uint32_t channels, bool interleaved) {
  Objc<::AVAudioFormat> native;
  guarded([&] {
    native = Objc<::AVAudioFormat>::adopting([[::AVAudioFormat alloc]
        initWithCommonFormat:static_cast<::AVAudioCommonFormat>(format)
                  sampleRate:sampleRate
                    channels:channels
                 interleaved:interleaved]);
  });
  return native ? std::make_shared<bridge::Format>(std::move(native)) : nullptr;
}

std::shared_ptr<AVAudioPCMBuffer> AVAudioPCMBuffer::initWithPCMFormat(AVAudioFormatPtr format,
                                                                      std::uint32_t frameCapacity) {
  if (format == nullptr) return nullptr;
  Objc<::AVAudioPCMBuffer> buffer;
  guarded([&] {
    buffer = Objc<::AVAudioPCMBuffer>::adopting([[::AVAudioPCMBuffer alloc]
        initWithPCMFormat:bridge::native(format)
            frameCapacity:frameCapacity]);
  });
  return buffer ? std::make_shared<bridge::PcmBuffer>(std::move(buffer)) : nullptr;
}

std::shared_ptr<AVAudioConverter> AVAudioConverter::initFromFormat(AVAudioFormatPtr from,
                                                                   AVAudioFormatPtr to) {
  if (from == nullptr || to == nullptr) return nullptr;
  Objc<::AVAudioConverter> converter;
  guarded([&] {
    converter = Objc<::AVAudioConverter>::adopting([[::AVAudioConverter alloc]
        initFromFormat:bridge::native(from)
              toFormat:bridge::native(to)]);
  });
  return converter ? std::make_shared<Converter>(std::move(converter)) : nullptr;
}

std::shared_ptr<AVAudioSourceNode> AVAudioSourceNode::initWithFormat(
    AVAudioFormatPtr format, AVAudioSourceNodeRenderBlock block) {
  return bridge::makeSourceNode(format, std::move(block));
}

std::shared_ptr<AVAudioEngine> AVAudioEngine::make() {
  Objc<::AVAudioEngine> engine;
  guarded([&] { engine = Objc<::AVAudioEngine>::adopting([[::AVAudioEngine alloc] init]); });
  return engine ? std::make_shared<Engine>(std::move(engine)) : nullptr;
}

namespace helpers {

std::shared_ptr<AVAudioPlayer> audioPlayerOfFile(std::string_view path) {
  Objc<::AVAudioPlayer> player;
  guarded([&] {
    const auto string = bridge::toString(path);
    if (!string || path.empty()) return;
    ::NSURL* const url = [::NSURL fileURLWithPath:(NSString*)string.get()];
    player = Objc<::AVAudioPlayer>::adopting(
        [[::AVAudioPlayer alloc] initWithContentsOfURL:url error:nullptr]);
  });
  return player ? std::make_shared<Player>(std::move(player)) : nullptr;
}

}  // namespace helpers

}  // namespace vlm::platform
