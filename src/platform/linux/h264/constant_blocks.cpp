#include "platform/linux/h264/constant_blocks.h"

#include <algorithm>
#include <cstring>

#include "platform/linux/h264/block.h"

namespace vlm::platform::h264 {
namespace {

// Clears the flags of one row of blocks wherever one of `rows` rows of 16 bytes differs. Rows are
// padded to whole vectors, but the padding means nothing: the last block is compared
// only as far as the picture goes.
void compareBlockRow(PlaneView picture, PlaneView previous, std::size_t rows, std::size_t width,
                     std::span<std::uint8_t> flags) {
  const std::size_t whole = width / kBlock;
  for (std::size_t row = 0; row < rows; ++row) {
    const auto* now = picture.row(row);
    const auto* before = previous.row(row);
    for (std::size_t block = 0; block < whole; ++block) {
      if (std::memcmp(now + block * kBlock, before + block * kBlock, kBlock) != 0) {
        flags[block] = 0;
      }
    }
    const std::size_t rest = width % kBlock;
    if (rest > 0 && std::memcmp(now + whole * kBlock, before + whole * kBlock, rest) != 0) {
      flags[whole] = 0;
    }
  }
}

}  // namespace

void ConstantBlocks::update(const EncoderInput::Source& source, const ChangeMap* changes) {
  const auto& picture = source.picture;
  columns_ = (picture.width + kBlock - 1) / kBlock;
  const std::size_t rows = (picture.height + kBlock - 1) / kBlock;
  flags_.assign(columns_ * rows, 0);
  if (changes != nullptr && changes->columns == columns_ && changes->rows == rows) {
    applyAccount(*changes);
  } else {
    forget();
    if (source.previous) compare(picture, *source.previous);
  }
}

void ConstantBlocks::applyAccount(const ChangeMap& changes) {
  if (changes.source == encodedSource_ && changes.picture >= encodedPicture_) {
    for (std::size_t block = 0; block < flags_.size(); ++block) {
      flags_[block] = changes.unchangedSince(encodedPicture_, block) ? 1 : 0;
    }
  }
  encodedSource_ = changes.source;
  encodedPicture_ = changes.picture;
}

void ConstantBlocks::compare(const YCbCrPicture& picture, const YCbCrPicture& previous) {
  std::ranges::fill(flags_, 1);
  const std::size_t rows = flags_.size() / columns_;
  for (std::size_t row = 0; row < rows; ++row) {
    const auto flags = std::span(flags_).subspan(row * columns_, columns_);
    const std::size_t y = row * kBlock;
    const std::size_t count = std::min(kBlock, picture.height - y);
    const auto now = picture.from(0, y);
    const auto before = previous.from(0, y);
    compareBlockRow(now.luma, before.luma, count, picture.width, flags);
    // Half as many rows, and as many bytes in each: one of Cb and one of Cr for two pixels.
    compareBlockRow(now.chroma, before.chroma, count / 2, picture.width, flags);
  }
}

}  // namespace vlm::platform::h264
