#include "platform/linux/x11/extensions.h"

#include <xcb/composite.h>
#include <xcb/damage.h>
#include <xcb/randr.h>
#include <xcb/record.h>
#include <xcb/res.h>
#include <xcb/shape.h>
#include <xcb/shm.h>
#include <xcb/xfixes.h>
#include <xcb/xinput.h>
#include <xcb/xtest.h>

#include <tuple>

#include "platform/linux/x11/reply.h"
#include "platform/linux/x11/xkb.h"

namespace vlm::platform::x11 {
namespace {

using Version = std::tuple<unsigned, unsigned>;

// Most answers carry the version in fields of these names.
template <class T>
Version versionIn(T* answer) {
  const Reply<T> reply(answer);
  return reply ? Version(reply->major_version, reply->minor_version) : Version(0, 0);
}

Version versionIn(xcb_res_query_version_reply_t* answer) {
  const Reply<xcb_res_query_version_reply_t> reply(answer);
  return reply ? Version(reply->server_major, reply->server_minor) : Version(0, 0);
}

Version versionIn(xcb_xkb_use_extension_reply_t* answer) {
  const Reply<xcb_xkb_use_extension_reply_t> reply(answer);
  return reply && reply->supported != 0 ? Version(reply->serverMajor, reply->serverMinor)
                                        : Version(0, 0);
}

Version versionIn(xcb_test_get_version_reply_t* answer) {
  const Reply<xcb_test_get_version_reply_t> reply(answer);
  return reply ? Version(reply->major_version, reply->minor_version) : Version(0, 0);
}

struct Needed {
  xcb_extension_t* id;
  Version oldest;
  Version (*ask)(xcb_connection_t*);
};

// What is asked for is the newest version that the platform knows; an extension wants to be asked
// before its first use.
Needed neededOf(Extension extension) {
  using C = xcb_connection_t*;
  switch (extension) {
    case Extension::composite:
      return {&xcb_composite_id, {0, 2}, [](C c) {
                return versionIn(xcb_composite_query_version_reply(
                    c, xcb_composite_query_version(c, 0, 4), nullptr));
              }};
    case Extension::damage:
      return {&xcb_damage_id, {1, 1}, [](C c) {
                return versionIn(
                    xcb_damage_query_version_reply(c, xcb_damage_query_version(c, 1, 1), nullptr));
              }};
    case Extension::fixes:
      return {&xcb_xfixes_id, {2, 0}, [](C c) {
                return versionIn(
                    xcb_xfixes_query_version_reply(c, xcb_xfixes_query_version(c, 5, 0), nullptr));
              }};
    case Extension::input:
      return {&xcb_input_id, {2, 0}, [](C c) {
                return versionIn(xcb_input_xi_query_version_reply(
                    c, xcb_input_xi_query_version(c, 2, 0), nullptr));
              }};
    case Extension::keyboard:
      return {&xcb_xkb_id, {1, 0}, [](C c) {
                return versionIn(
                    xcb_xkb_use_extension_reply(c, xcb_xkb_use_extension(c, 1, 0), nullptr));
              }};
    case Extension::memory:
      return {&xcb_shm_id, {1, 2}, [](C c) {
                return versionIn(xcb_shm_query_version_reply(c, xcb_shm_query_version(c), nullptr));
              }};
    case Extension::randr:
      return {&xcb_randr_id, {1, 5}, [](C c) {
                return versionIn(
                    xcb_randr_query_version_reply(c, xcb_randr_query_version(c, 1, 5), nullptr));
              }};
    case Extension::record:
      return {&xcb_record_id, {1, 13}, [](C c) {
                return versionIn(
                    xcb_record_query_version_reply(c, xcb_record_query_version(c, 1, 13), nullptr));
              }};
    case Extension::resources:
      return {&xcb_res_id, {1, 2}, [](C c) {
                return versionIn(
                    xcb_res_query_version_reply(c, xcb_res_query_version(c, 1, 2), nullptr));
              }};
    case Extension::test:
      return {
          &xcb_test_id, {2, 1}, [](C c) {
            return versionIn(xcb_test_get_version_reply(c, xcb_test_get_version(c, 2, 2), nullptr));
          }};
    case Extension::shape:
      break;
  }
  return {&xcb_shape_id, {1, 1}, [](C c) {
            return versionIn(xcb_shape_query_version_reply(c, xcb_shape_query_version(c), nullptr));
          }};
}

const xcb_query_extension_reply_t* dataOf(xcb_connection_t* connection, xcb_extension_t* id) {
  return xcb_get_extension_data(connection, id);  // owned by XCB
}

}  // namespace

bool supports(xcb_connection_t* connection, Extension extension) {
  const auto needed = neededOf(extension);
  // A request of an extension that is not there would end the connection.
  const auto* data = dataOf(connection, needed.id);
  return data != nullptr && data->present != 0 && needed.ask(connection) >= needed.oldest;
}

std::uint8_t firstEventOf(xcb_connection_t* connection, Extension extension) {
  const auto* data = dataOf(connection, neededOf(extension).id);
  return data != nullptr ? data->first_event : 0;
}

}  // namespace vlm::platform::x11
