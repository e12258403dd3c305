#include "platform/linux/screen/layered_reader.h"

#include <libyuv.h>

#include <algorithm>

namespace vlm::platform::screen {
namespace {

bool hides(const Layer& layer, const Rectangle& area) {
  return !layer.picture->isTranslucent() && !layer.picture->parts() &&
         intersection(layer.frame, area) == area;
}

std::size_t bytesOf(int pixels) {
  return static_cast<std::size_t>(pixels) * kBytesPerPixel;
}

}  // namespace

void LayeredReader::read(std::span<const Layer> layers, std::span<const Rectangle> areas,
                         const Source::Receiver& receive) {
  pieces_.clear();
  for (std::size_t i = 0; i < areas.size(); ++i) addPieces(layers, areas[i], i);
  std::vector<ImageReader::Request> requests;
  for (const auto& piece : pieces_) {
    const auto& [picture, frame] = *piece.layer;
    requests.push_back(
        {picture->pixmap(), picture->inPixmap(piece.place.movedBy(-frame.x, -frame.y))});
  }
  const auto views = reader_.read(requests);
  for (std::size_t i = 0, first = 0; i < areas.size(); ++i) {
    std::size_t end = first;
    while (end < pieces_.size() && pieces_[end].area == i) ++end;
    const auto pieces = std::span(pieces_).subspan(first, end - first);
    const auto pixels = compose(areas[i], pieces, views.subspan(first, end - first));
    receive(i, pixels);
    first = end;
  }
}

void LayeredReader::addPieces(std::span<const Layer> layers, const Rectangle& area,
                              std::size_t index) {
  // Nothing behind a layer that hides the area need be read.
  auto from = layers.end();
  while (from != layers.begin()) {
    if (hides(*--from, area)) break;
  }
  for (; from != layers.end(); ++from) {
    const Rectangle place = intersection(from->frame, area);
    if (!place.isEmpty()) pieces_.push_back({index, &*from, place});
  }
}

PlaneView LayeredReader::compose(const Rectangle& area, std::span<const Piece> pieces,
                                 std::span<const PlaneView> views) {
  const bool isOnePiece = pieces.size() == 1 && pieces[0].place == area &&
                          !pieces[0].layer->picture->parts() && views[0].pixels != nullptr;
  if (isOnePiece) return views[0];
  canvas_.assign(bytesOf(area.width) * static_cast<std::size_t>(area.height), 0);
  for (std::size_t i = 0; i < pieces.size(); ++i) {
    if (views[i].pixels != nullptr) draw(area, pieces[i], views[i]);
  }
  return {canvas_.data(), bytesOf(area.width)};
}

void LayeredReader::draw(const Rectangle& area, const Piece& piece, PlaneView pixels) {
  const Plane canvas{canvas_.data(), bytesOf(area.width)};
  const auto paint = [&](const Rectangle& part) {
    const auto from = pixels.from(bytesOf(part.x - piece.place.x),
                                  static_cast<std::size_t>(part.y - piece.place.y));
    const auto to =
        canvas.from(bytesOf(part.x - area.x), static_cast<std::size_t>(part.y - area.y));
    if (piece.layer->picture->isTranslucent()) {
      libyuv::ARGBBlend(from.pixels, from.rowBytes(), to.pixels, to.rowBytes(), to.pixels,
                        to.rowBytes(), part.width, part.height);
    } else {
      libyuv::ARGBCopy(from.pixels, from.rowBytes(), to.pixels, to.rowBytes(), part.width,
                       part.height);
    }
  };
  const auto& parts = piece.layer->picture->parts();
  if (!parts) {
    paint(piece.place);
    return;
  }
  for (const auto& part : *parts) {
    const auto& frame = piece.layer->frame;
    const Rectangle shown = intersection(part.movedBy(frame.x, frame.y), piece.place);
    if (!shown.isEmpty()) paint(shown);
  }
}

}  // namespace vlm::platform::screen
