// A pointer whose owner ends it by a function of its library.
#pragma once

#include <memory>

namespace remote {

template <auto end>
struct End {
  void operator()(auto* object) const { end(object); }
};
template <class Type, auto end>
using Owner = std::unique_ptr<Type, End<end>>;

}  // namespace remote
