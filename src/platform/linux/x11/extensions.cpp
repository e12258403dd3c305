#include "platform/linux/x11/extensions.h"

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/xfixes.h>

#include <tuple>

#include "platform/linux/x11/reply.h"

namespace vlm::platform::x11 {
namespace {

using Version = std::tuple<unsigned, unsigned>;

xcb_extension_t& idOf(Extension extension) {
  switch (extension) {
    case Extension::composite:
      return xcb_composite_id;
    case Extension::damage:
      return xcb_damage_id;
    case Extension::fixes:
      return xcb_xfixes_id;
    case Extension::randr:
      return xcb_randr_id;
    case Extension::resources:
      return xcb_res_id;
    case Extension::shape:
      break;
  }
  return xcb_shape_id;
}

template <class T>
Version versionIn(T* answer) {
  const Reply<T> reply(answer);
  return reply ? Version(reply->major_version, reply->minor_version) : Version(0, 0);
}

Version versionIn(xcb_res_query_version_reply_t* answer) {
  const Reply<xcb_res_query_version_reply_t> reply(answer);
  return reply ? Version(reply->server_major, reply->server_minor) : Version(0, 0);
}

bool isNewEnough(xcb_connection_t* c, Extension extension) {
  switch (extension) {
    case Extension::composite:
      return versionIn(xcb_composite_query_version_reply(c, xcb_composite_query_version(c, 0, 4),
                                                         nullptr)) >= Version(0, 2);
    case Extension::damage:
      return versionIn(xcb_damage_query_version_reply(c, xcb_damage_query_version(c, 1, 1),
                                                      nullptr)) >= Version(1, 1);
    case Extension::fixes:
      return versionIn(xcb_xfixes_query_version_reply(c, xcb_xfixes_query_version(c, 5, 0),
                                                      nullptr)) >= Version(2, 0);
    case Extension::randr:
      return versionIn(xcb_randr_query_version_reply(c, xcb_randr_query_version(c, 1, 5),
                                                     nullptr)) >= Version(1, 5);
    case Extension::resources:
      return versionIn(xcb_res_query_version_reply(c, xcb_res_query_version(c, 1, 2), nullptr)) >=
             Version(1, 2);
    case Extension::shape:
      break;
  }
  return versionIn(xcb_shape_query_version_reply(c, xcb_shape_query_version(c), nullptr)) >=
         Version(1, 1);
}

const xcb_query_extension_reply_t* dataOf(const Connection& connection, Extension extension) {
  return xcb_get_extension_data(connection.get(), &idOf(extension));  // owned by XCB
}

}  // namespace

bool supports(const Connection& connection, Extension extension) {
  // A request of an extension that is not there would end the connection.
  const auto* data = dataOf(connection, extension);
  return data != nullptr && data->present != 0 && isNewEnough(connection.get(), extension);
}

std::uint8_t firstEventOf(const Connection& connection, Extension extension) {
  const auto* data = dataOf(connection, extension);
  return data != nullptr ? data->first_event : 0;
}

}  // namespace vlm::platform::x11
