#include "platform/linux/screen/image_reader.h"

namespace vlm::platform::screen {
namespace {

constexpr std::uint32_t kAllPlanes = ~0U;

std::size_t rowBytes(const ImageReader::Request& request) {
  return static_cast<std::size_t>(request.area.width) * kBytesPerPixel;
}

std::size_t imageBytes(const ImageReader::Request& request) {
  return rowBytes(request) * static_cast<std::size_t>(request.area.height);
}

}  // namespace

std::span<const PlaneView> ImageReader::read(std::span<const Request> requests) {
  views_.clear();
  replies_.clear();
  if (requests.empty()) return views_;
  std::size_t size = 0;
  for (const auto& request : requests) size += imageBytes(request);
  if (reserve(size)) {
    readShared(requests);
  } else {
    readThroughConnection(requests);
  }
  return views_;
}

bool ImageReader::reserve(std::size_t size) {
  if (shared_ && shared_->size() >= size) return true;
  if (!canShare_) return false;
  shared_ = nullptr;
  shared_ = x11::SharedPixels::make(connection_.get(), size);
  canShare_ = shared_ != nullptr;
  return canShare_;
}

void ImageReader::readShared(std::span<const Request> requests) {
  std::vector<xcb_shm_get_image_cookie_t> asked;
  std::size_t offset = 0;
  for (const auto& request : requests) {
    const auto& area = request.area;
    asked.push_back(xcb_shm_get_image(
        connection_.get(), request.drawable, static_cast<std::int16_t>(area.x),
        static_cast<std::int16_t>(area.y), static_cast<std::uint16_t>(area.width),
        static_cast<std::uint16_t>(area.height), kAllPlanes, XCB_IMAGE_FORMAT_Z_PIXMAP,
        shared_->segment(), static_cast<std::uint32_t>(offset)));
    views_.push_back({shared_->data() + offset, rowBytes(request)});
    offset += imageBytes(request);
  }
  for (std::size_t i = 0; i < asked.size(); ++i) {
    const x11::Reply<xcb_shm_get_image_reply_t> reply(
        xcb_shm_get_image_reply(connection_.get(), asked[i], nullptr));
    if (!reply || reply->size != imageBytes(requests[i])) views_[i].pixels = nullptr;
  }
}

void ImageReader::readThroughConnection(std::span<const Request> requests) {
  std::vector<xcb_get_image_cookie_t> asked;
  for (const auto& request : requests) {
    const auto& area = request.area;
    asked.push_back(xcb_get_image(connection_.get(), XCB_IMAGE_FORMAT_Z_PIXMAP, request.drawable,
                                  static_cast<std::int16_t>(area.x),
                                  static_cast<std::int16_t>(area.y),
                                  static_cast<std::uint16_t>(area.width),
                                  static_cast<std::uint16_t>(area.height), kAllPlanes));
  }
  for (std::size_t i = 0; i < asked.size(); ++i) {
    replies_.emplace_back(xcb_get_image_reply(connection_.get(), asked[i], nullptr));
    auto* reply = replies_.back().get();
    const bool isWhole =
        reply != nullptr &&
        static_cast<std::size_t>(xcb_get_image_data_length(reply)) >= imageBytes(requests[i]);
    views_.push_back({isWhole ? xcb_get_image_data(reply) : nullptr, rowBytes(requests[i])});
  }
}

}  // namespace vlm::platform::screen
