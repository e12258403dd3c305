#include "platform/linux/screen/frame_composer.h"

#include <libyuv/convert_from_argb.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <new>
#include <utility>

namespace vlm::platform::screen {
namespace {

std::uint64_t nextSourceNumber() {
  static std::atomic<std::uint64_t> last{0};
  return ++last;
}

template <typename Byte>
BasicPlanes<Byte> from(const BasicPlanes<Byte>& planes, int x, int y) {
  return planes.from(static_cast<std::size_t>(x), static_cast<std::size_t>(y));
}

}  // namespace

// A picture in the making.
struct FrameComposer::Painting {
  std::uint64_t number;
  std::uint64_t numberBefore;  // the picture that the frame held
  Planes target;
  std::optional<PlanesView> latest;  // none for the first picture; may be the target itself
  bool isDifferent = false;
};

FrameComposer::FrameComposer(Size output, std::size_t depth)
    : output_(output), pool_(output, depth), stale_(output) {
  changes_.source = nextSourceNumber();
  changes_.columns = static_cast<std::size_t>(blocksFor(output.width));
  changes_.rows = static_cast<std::size_t>(blocksFor(output.height));
  changes_.lastChange.resize(changes_.columns * changes_.rows);
  scaledRows_.resize(static_cast<std::size_t>(output.width) * kBytesPerPixel * kBlock);
  convertedRows_ = CVPixelBuffer::make(static_cast<std::size_t>(output.width), kBlock,
                                       kCVPixelFormatType_420YpCbCr8BiPlanarVideoRange);
  if (!convertedRows_) throw std::bad_alloc();
}

// Pictures have even sizes. Of a content that is one pixel larger the last column or row is left
// out: scaled, every pixel of it would be blurred.
void FrameComposer::setContentSize(Size content) {
  const auto isOneMore = [](int length, int output) { return length - output == 1; };
  const Size even{content.width - (isOneMore(content.width, output_.width) ? 1 : 0),
                  content.height - (isOneMore(content.height, output_.height) ? 1 : 0)};
  if (even == output_) content = even;
  if (content == content_) return;
  content_ = content;
  scaler_.reset();
  if (content.isEmpty()) return;
  scaler_.emplace(content, output_);
  stale_.addAll();
}

void FrameComposer::invalidate(const Rectangle& contentArea) {
  const Rectangle inside = intersection(contentArea, x11::wholeOf(content_));
  if (scaler_ && !inside.isEmpty()) stale_.add(scaler_->reach(inside));
}

Ref<CVPixelBuffer> FrameComposer::compose(Source& source) {
  auto* const frame = pool_.acquire();
  if (frame == nullptr || !isBehind()) return nullptr;
  const auto* const latest = pool_.latest();
  Painting painting{changes_.picture + 1, frame->picture, frame->buffer->planes(), {}};
  if (latest != nullptr) {
    painting.latest = latest->buffer->planes();
  } else {
    beginFirst(painting);
  }

  const auto areas = stale_.takeRectangles();
  std::vector<Rectangle> contentAreas;
  contentAreas.reserve(areas.size());
  for (const auto& area : areas) contentAreas.push_back(scaler_->footprint(area));
  source.read(contentAreas, [&](std::size_t index, PlaneView pixels) {
    paint(painting, areas[index], contentAreas[index], pixels);
  });
  if (!painting.isDifferent) return nullptr;

  bringUpToDate(painting);
  frame->picture = changes_.picture = painting.number;
  frame->buffer->setChanges(std::make_shared<const ChangeMap>(changes_));
  return frame->buffer;
}

void FrameComposer::startAnew() {
  pool_.forgetPictures();
  stale_.addAll();
}

// Black, so that a part that the server refuses does not show what the memory held before.
void FrameComposer::beginFirst(const Painting& painting) {
  constexpr std::uint8_t kBlackLuma = 16;
  constexpr std::uint8_t kNoColour = 128;
  const auto height = static_cast<std::size_t>(output_.height);
  std::fill_n(painting.target.luma.pixels, painting.target.luma.stride * height, kBlackLuma);
  std::fill_n(painting.target.chroma.pixels, painting.target.chroma.stride * ((height + 1) / 2),
              kNoColour);
  std::ranges::fill(changes_.lastChange, painting.number);
}

void FrameComposer::paint(Painting& painting, const Rectangle& area, const Rectangle& contentArea,
                          PlaneView pixels) {
  for (int y = area.y; y < area.bottom(); y += kBlock) {
    const Rectangle rows{area.x, y, area.width, std::min(kBlock, area.bottom() - y)};
    convertRows(rows, contentArea, pixels);
    takeChangedBlocks(painting, rows);
  }
}

void FrameComposer::convertRows(const Rectangle& rows, const Rectangle& contentArea,
                                PlaneView pixels) {
  PlaneView from = pixels;
  if (scaler_->isIdentity()) {
    from = pixels.from(0, static_cast<std::size_t>(rows.y - contentArea.y));
  } else {
    const Plane scaled{scaledRows_.data(), static_cast<std::size_t>(rows.width) * kBytesPerPixel};
    scaler_->scale(pixels, contentArea, rows, scaled);
    from = scaled;
  }
  const auto [luma, chroma] = convertedRows_->planes();
  libyuv::ARGBToNV12(from.pixels, from.rowBytes(), luma.pixels, luma.rowBytes(), chroma.pixels,
                     chroma.rowBytes(), rows.width, rows.height);
}

void FrameComposer::takeChangedBlocks(Painting& painting, const Rectangle& rows) {
  const auto converted = convertedRows_->planes();
  const std::size_t firstOfRow = static_cast<std::size_t>(rows.y / kBlock) * changes_.columns;
  for (int x = rows.x; x < rows.right(); x += kBlock) {
    const Size size{std::min(kBlock, rows.right() - x), rows.height};
    const auto block = from(converted, x - rows.x, 0);
    if (painting.latest && isSame(block, from(*painting.latest, x, rows.y), size)) continue;
    copyPixels(block, from(painting.target, x, rows.y), size);
    changes_.lastChange[firstOfRow + static_cast<std::size_t>(x / kBlock)] = painting.number;
    painting.isDifferent = true;
  }
}

// Fetches from the latest picture what the frame missed since it last held a picture.
void FrameComposer::bringUpToDate(const Painting& painting) const {
  if (!painting.latest || painting.latest->luma.pixels == painting.target.luma.pixels) return;
  const auto isMissed = [&](std::uint64_t change) {
    return change > painting.numberBefore && change < painting.number;
  };
  for (std::size_t row = 0; row < changes_.rows; ++row) {
    const std::uint64_t* const changed = &changes_.lastChange[row * changes_.columns];
    const int y = static_cast<int>(row) * kBlock;
    const int height = std::min(kBlock, output_.height - y);
    for (std::size_t column = 0; column < changes_.columns;) {
      const std::size_t begin = column;
      while (column < changes_.columns && isMissed(changed[column])) ++column;
      if (column == begin) {
        ++column;
        continue;
      }
      const int x = static_cast<int>(begin) * kBlock;
      const int width = std::min(static_cast<int>(column) * kBlock, output_.width) - x;
      copyPixels(from(*painting.latest, x, y), from(painting.target, x, y), {width, height});
    }
  }
}

}  // namespace vlm::platform::screen
