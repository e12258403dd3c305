// GNUstep's Foundation, with what Apple's brings along.
#pragma once
#include_next <Foundation/Foundation.h>

#import <CoreFoundation/CoreFoundation.h>
// One type each, as on a Mac.
#define NSPoint CGPoint
#define NSSize CGSize
#define NSRect CGRect
#undef YES
#undef NO
#define YES __objc_yes
#define NO __objc_no
// GNUstep's release here does not have it.
@interface NSString (StandIn)
- (BOOL)localizedCaseInsensitiveContainsString:(NSString*)part;
@end
