#include "platform/linux/pulse/engine.h"

#include <utility>

#include "platform/linux/pulse/engine_nodes.h"

namespace vlm::platform::pulse {
namespace {

class Engine final : public AVAudioEngine {
 public:
  ~Engine() override { stopNodes(); }

  AVAudioInputNode& inputNode() override { return input_; }
  AVAudioOutputNode& outputNode() override { return output_; }

  // A node that is not connected plays nothing.
  void attachNode(std::shared_ptr<AVAudioSourceNode> node) override {
    // Every source node of this platform is of its own making.
    attached_ = std::static_pointer_cast<SourceNode>(std::move(node));
  }

  // The server mixes and converts, and the format is the node's own.
  std::optional<NSError> connectToMainMixer(AVAudioSourceNode& node, AVAudioFormatPtr) override {
    if (attached_.get() != &node) return NSError{"the node is not attached"};
    output_.setSource(attached_);
    return std::nullopt;
  }

  void prepare() override {}

  std::optional<NSError> start() override {
    stopNodes();
    connection_ = Connection::open();
    if (!connection_) return NSError{"there is no sound server"};
    if (input_.isWanted() && !input_.start(*connection_)) return failure();
    if (output_.isWanted() && !output_.start(*connection_)) return failure();
    return std::nullopt;
  }

  void stop() override { stopNodes(); }

 private:
  NSError failure() {
    NSError error;
    {
      const Connection::Lock lock(*connection_);
      error.localizedDescription = lastError(*connection_);
    }
    stopNodes();
    return error;
  }

  void stopNodes() {
    input_.stop();
    output_.stop();
    connection_ = nullptr;
  }

  InputNode input_;
  OutputNode output_;
  std::shared_ptr<SourceNode> attached_;
  std::unique_ptr<Connection> connection_;
};

}  // namespace

std::shared_ptr<AVAudioEngine> makeEngine() {
  return std::make_shared<Engine>();
}

}  // namespace vlm::platform::pulse
