#pragma once

#import <Foundation/Foundation.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>
#include <memory>
#include <vector>

#include "platform/screen_capture_kit.h"

namespace vlm::platform::bridge {

// The content in the header's shape, null for nil. Each record keeps the framework's object.
std::shared_ptr<const SCShareableContent> fromContent(::SCShareableContent* content);

// The framework's object of a record that came from fromContent; nothing else makes such records.
::SCWindow* native(const SCWindow& window);
::SCRunningApplication* native(const SCRunningApplication& application);
::SCDisplay* native(const SCDisplay& display);

// The same for a list. Autoreleased.
NSArray<::SCWindow*>* natives(const std::vector<std::shared_ptr<const SCWindow>>& windows);
NSArray<::SCRunningApplication*>* natives(
    const std::vector<std::shared_ptr<const SCRunningApplication>>& applications);

}  // namespace vlm::platform::bridge
