#pragma once

#include <cstdint>
#include <vector>

#include "platform/linux/screen/source.h"

namespace vlm::platform::screen {

// Scales pictures of one size to another: the average of what a pixel covers where it gets
// smaller, linear between pixels where it gets larger. Every pixel of the output depends only on
// the pixels of its own footprint, so any part can be made alone and is the same as in the whole.
class Scaler {
 public:
  Scaler(Size input, Size output);

  bool isIdentity() const { return input_ == output_; }
  // The pixels of the input that an area of the output is made of.
  Rectangle footprint(const Rectangle& outputArea) const;
  // The pixels of the output that an area of the input has a part in.
  Rectangle reach(const Rectangle& inputArea) const;

  // Writes rows of the output. `pixels` are those of `inputArea`, which holds the footprint.
  void scale(PlaneView pixels, const Rectangle& inputArea, const Rectangle& outputRows,
             Plane output);

 private:
  // One axis: for every output position where its footprint begins and how much each pixel of it
  // counts, in parts of 256.
  struct Axis {
    Axis(int input, int output);
    int end(int position) const {
      return first[position] + (weightsAt[position + 1] - weightsAt[position]);
    }
    std::vector<int> first;
    std::vector<int> weightsAt;  // one more than there are positions
    std::vector<std::uint16_t> weights;
  };

  void mixRows(PlaneView pixels, const Rectangle& inputArea, int row);

  Size input_;
  Size output_;
  Axis across_;
  Axis down_;
  std::vector<std::uint16_t> sums_;
};

}  // namespace vlm::platform::screen
