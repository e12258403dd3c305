#include "platform/linux/x11/properties.h"

#include <utility>

#include "platform/linux/x11/text_encoding.h"

namespace vlm::platform::x11 {
namespace {

// In units of four bytes; what is longer is cut. Client lists and titles stay far below.
constexpr std::uint32_t kLongestProperty = 1 << 16;

}  // namespace

PropertyRequest::PropertyRequest(const Connection& connection, xcb_window_t window,
                                 xcb_atom_t property)
    : connection_(connection.get()),
      compoundText_(connection.knownAtom(kCompoundText)),
      asked_(xcb_get_property(connection_, 0, window, property, XCB_GET_PROPERTY_TYPE_ANY, 0,
                              kLongestProperty)) {}

PropertyRequest::~PropertyRequest() {
  if (pending_) xcb_discard_reply(connection_, asked_.sequence);
}

PropertyRequest::PropertyRequest(PropertyRequest&& other) noexcept
    : connection_(other.connection_),
      compoundText_(other.compoundText_),
      asked_(other.asked_),
      pending_(std::exchange(other.pending_, false)),
      reply_(std::move(other.reply_)) {}

const xcb_get_property_reply_t* PropertyRequest::reply() {
  if (std::exchange(pending_, false)) {
    reply_.reset(xcb_get_property_reply(connection_, asked_, nullptr));
  }
  return reply_.get();
}

std::vector<std::uint32_t> PropertyRequest::values() {
  const auto* answer = reply();
  if (answer == nullptr || answer->format != 32) return {};
  const auto* first = static_cast<const std::uint32_t*>(xcb_get_property_value(answer));
  return {first, first + answer->value_len};
}

std::optional<std::string> PropertyRequest::text() {
  const auto* answer = reply();
  if (answer == nullptr || answer->format != 8) return std::nullopt;
  const std::string_view bytes(static_cast<const char*>(xcb_get_property_value(answer)),
                               answer->value_len);
  if (answer->type == XCB_ATOM_STRING) return fromLatin1(bytes);
  return answer->type == compoundText_ ? fromCompoundText(bytes) : validUtf8(bytes);
}

}  // namespace vlm::platform::x11
