#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "platform/linux/screen/image_reader.h"
#include "platform/linux/screen/source.h"
#include "platform/linux/screen/window_picture.h"

namespace vlm::platform::screen {

// A window's picture at its place in the content.
struct Layer {
  const WindowPicture* picture = nullptr;
  Rectangle frame;
};

// Reads a content that is made of windows before black, translucent ones over what is behind.
class LayeredReader {
 public:
  explicit LayeredReader(const x11::Connection& connection) : reader_(connection) {}

  // `layers` come back to front.
  void read(std::span<const Layer> layers, std::span<const Rectangle> areas,
            const Source::Receiver& receive);

 private:
  // A part of an area that is taken from one layer.
  struct Piece {
    std::size_t area;
    const Layer* layer;
    Rectangle place;
  };
  void addPieces(std::span<const Layer> layers, const Rectangle& area, std::size_t index);
  PlaneView compose(const Rectangle& area, std::span<const Piece> pieces,
                    std::span<const PlaneView> views);
  void draw(const Rectangle& area, const Piece& piece, PlaneView pixels);

  ImageReader reader_;
  std::vector<Piece> pieces_;
  std::vector<std::uint8_t> canvas_;
};

}  // namespace vlm::platform::screen
