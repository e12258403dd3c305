#pragma once

#import <Foundation/Foundation.h>

#include <map>
#include <string>
#include <vector>

namespace standin {

inline id object(const void* reference) {
  return static_cast<id>(const_cast<void*>(reference));
}

// Objects of the platform and of the stand-ins that live at this moment, by class.
std::map<std::string, int> objectsAlive();

}  // namespace standin

// An accessibility element: attributes by name, and whatever watches it.
@interface StandInElement : NSObject {
 @public
  NSMutableDictionary* attributes;
}
@end

// A point (1) or a size (2).
@interface StandInGeometry : NSObject {
 @public
  int type;
  double first, second;
}
@end
