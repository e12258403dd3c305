// Made by sdk/generator/generate.py from typed bindings; sdk/macos/sources.txt names them.
#pragma once
#import <CoreFoundation/CoreFoundation.h>
#import <CoreGraphics/CoreGraphics.h>

@class CALayer;
#ifdef __cplusplus
extern "C" {
#endif
#ifdef __cplusplus
}
#endif
@interface CALayer : NSObject
- (void)setBackgroundColor:(CGColorRef)backgroundColor;
- (CGFloat)contentsScale;
- (void)setContentsScale:(CGFloat)contentsScale;
- (void)setFrame:(CGRect)frame;
@end
