#pragma once

#include <memory>

#include "platform/linux/screen/content_filter.h"
#include "platform/linux/screen/feed.h"
#include "platform/linux/screen/x11_source.h"
#include "platform/linux/x11/connection.h"

namespace vlm::platform::screen {

// A connection to the X server for one content.
class X11Feed final : public Feed {
 public:
  X11Feed(std::unique_ptr<const x11::Connection> connection,
          std::shared_ptr<const ContentFilter> filter);

  Source* open(std::string& reason) override;
  void dispatch() override;
  void dispatchArrived() override;
  bool prepareToWait() override;
  int descriptor() const override { return connection_->descriptor(); }
  std::optional<std::string> lost() const override;
  void hangUp() noexcept override { connection_->hangUp(); }

 private:
  const std::unique_ptr<const x11::Connection> connection_;
  const std::shared_ptr<const ContentFilter> filter_;
  std::unique_ptr<X11Source> source_;
};

}  // namespace vlm::platform::screen
