// By hand: classes with type parameters, which the metadata has without them, and what the language
// itself asks for. The comparison looks the methods up like all others.
// names: NSPoint NSSize NSRect NSArray NSDictionary NSErrorDomain NSFastEnumerationState NSUInteger NSInteger
#import <objc/NSObject.h>
#include <stdint.h>
#include <sys/types.h>
// On 64-bit systems these are one type each.
typedef CGPoint NSPoint;
typedef CGSize NSSize;
typedef CGRect NSRect;
@class NSString;
typedef NSString *NSErrorDomain;
typedef struct NSFastEnumerationState {
  unsigned long state;
  id __unsafe_unretained *itemsPtr;
  unsigned long *mutationsPtr;
  unsigned long extra[5];
} NSFastEnumerationState;
@interface NSArray<__covariant ObjectType> : NSObject
- (NSUInteger)count;
- (ObjectType)objectAtIndex:(NSUInteger)index;
- (NSUInteger)countByEnumeratingWithState:(NSFastEnumerationState *)state
                                  objects:(id __unsafe_unretained[])buffer
                                    count:(NSUInteger)len;
@end
@interface NSDictionary<__covariant KeyType, __covariant ObjectType> : NSObject
@end
