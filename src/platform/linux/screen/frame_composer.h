#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

#include "platform/linux/screen/block_pixels.h"
#include "platform/linux/screen/block_set.h"
#include "platform/linux/screen/frame_pool.h"
#include "platform/linux/screen/scaler.h"
#include "platform/linux/screen/source.h"
#include "platform/portable/change_map.h"

namespace vlm::platform::screen {

// Makes the pictures of one stream. What a picture costs follows what changed: only that is read,
// scaled and converted, block by block of the output, and compared with the picture before, since
// much of what is drawn anew looks as it did.
class FrameComposer {
 public:
  FrameComposer(Size output, std::size_t depth);

  // Says that the content changed somewhere; everything after a change of its size.
  void setContentSize(Size content);
  void invalidate(const Rectangle& contentArea);

  // True while something changed that no picture shows yet.
  bool isBehind() const { return scaler_ && !stale_.isEmpty(); }
  // False while the receiver holds all frames.
  bool hasFreeFrame() { return pool_.acquire() != nullptr; }

  // The next picture, its account of changes attached. Null when nothing looks different after
  // all, and when there is no free frame; what changed is then not forgotten.
  Ref<CVPixelBuffer> compose(Source& source);
  // The next picture is made as the first one was: for a picture that must not be shown after all.
  void startAnew();

 private:
  struct Painting;

  void beginFirst(const Painting& painting);
  void paint(Painting& painting, const Rectangle& area, const Rectangle& contentArea,
             PlaneView pixels);
  void convertRows(const Rectangle& rows, const Rectangle& contentArea, PlaneView pixels);
  void takeChangedBlocks(Painting& painting, const Rectangle& rows);
  void bringUpToDate(const Painting& painting) const;

  const Size output_;
  FramePool pool_;
  BlockSet stale_;
  Size content_;
  std::optional<Scaler> scaler_;
  ChangeMap changes_;  // as of the latest picture

  // One row of blocks on its way into a picture: scaled, then converted.
  std::vector<std::uint8_t> scaledRows_;
  Ref<CVPixelBuffer> convertedRows_;
};

}  // namespace vlm::platform::screen
