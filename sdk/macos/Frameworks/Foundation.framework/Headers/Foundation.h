// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>

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

@class NSData, NSDate, NSError, NSException, NSJSONSerialization, NSString, NSThread, NSURL;
#ifdef __cplusplus
extern "C" {
#endif
typedef NSString * NSExceptionName;
typedef enum NSJSONWritingOptions : uint64_t NSJSONWritingOptions;
enum NSJSONWritingOptions : uint64_t {
  NSJSONWritingPrettyPrinted = 1,
  NSJSONWritingSortedKeys = 2,
  NSJSONWritingFragmentsAllowed = 4,
  NSJSONWritingWithoutEscapingSlashes = 8
};
void NSLog(NSString * format, ...);
typedef NSString * NSRunLoopMode;
typedef double NSTimeInterval;
extern const NSRunLoopMode NSDefaultRunLoopMode;
#ifdef __cplusplus
}
#endif
@interface NSError : NSObject
- (NSString *)localizedDescription;
@end
@interface NSException : NSObject
- (NSString *)reason;
- (NSExceptionName)name;
@end
@interface NSURL : NSObject
+ (instancetype)URLWithString:(NSString *)URLString;
+ (NSURL *)fileURLWithPath:(NSString *)path;
- (NSString *)absoluteString;
@end
@interface NSString : NSObject
- (NSUInteger)length;
- (BOOL)isEqualToString:(NSString *)aString;
- (NSString *)precomposedStringWithCanonicalMapping;
- (BOOL)localizedCaseInsensitiveContainsString:(NSString *)str __attribute__((availability(macos,introduced=10.10)));
@end
@interface NSData : NSObject
- (const void *)bytes;
- (NSUInteger)length;
@end
@interface NSThread : NSObject
+ (BOOL)isMainThread;
@end
@interface NSJSONSerialization : NSObject
+ (BOOL)isValidJSONObject:(id)obj __attribute__((availability(macos,introduced=10.7)));
+ (NSData *)dataWithJSONObject:(id)obj options:(NSJSONWritingOptions)opt error:(NSError * _Nullable *)error __attribute__((availability(macos,introduced=10.7)));
@end
@interface NSDate : NSObject
+ (instancetype)dateWithTimeIntervalSinceNow:(NSTimeInterval)secs;
@end
