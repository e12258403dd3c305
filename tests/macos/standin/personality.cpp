// clang gives every function of an Objective-C++ source the personality of the run-time, which
// knows no C++ types. Linked with --wrap: only the function with @catch keeps it.
#include <unwind.h>

#include <cstdint>
#include <string>

using Personality = _Unwind_Reason_Code(int, _Unwind_Action, std::uint64_t, _Unwind_Exception*,
                                        _Unwind_Context*);

extern "C" {
Personality __real___gnu_objc_personality_v0, __gxx_personality_v0,
    __wrap___gnu_objc_personality_v0;
bool vlmCallGuarded(void (*call)(void*), void* context, std::string* reason);

_Unwind_Reason_Code __wrap___gnu_objc_personality_v0(int version, _Unwind_Action actions,
                                                     std::uint64_t kind,
                                                     _Unwind_Exception* exception,
                                                     _Unwind_Context* context) {
  const bool catches =
      _Unwind_GetRegionStart(context) == reinterpret_cast<std::uintptr_t>(&vlmCallGuarded);
  return (catches ? __real___gnu_objc_personality_v0 : __gxx_personality_v0)(version, actions, kind,
                                                                             exception, context);
}
}
