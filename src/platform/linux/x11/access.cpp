#include "platform/linux/x11/access.h"

#include <algorithm>
#include <initializer_list>

#include "platform/linux/x11/broken_pipe.h"
#include "platform/linux/x11/extensions.h"

namespace vlm::platform::x11 {
namespace {

bool displaySupports(std::initializer_list<Extension> extensions) {
  const BrokenPipeGuard guard;
  const auto connection = Connection::open();
  return connection && std::ranges::all_of(extensions, [&](Extension extension) {
           return supports(*connection, extension);
         });
}

}  // namespace

bool mayCaptureScreen() {
  return displaySupports(
      {Extension::damage, Extension::composite, Extension::randr, Extension::fixes});
}

bool mayPostInput() {
  return displaySupports({Extension::test});
}

}  // namespace vlm::platform::x11
