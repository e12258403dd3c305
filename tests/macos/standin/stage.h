#pragma once

#import <ApplicationServices/ApplicationServices.h>
#import <Foundation/Foundation.h>
#import <ScreenCaptureKit/ScreenCaptureKit.h>

#include <functional>
#include <map>
#include <string>
#include <vector>

// What a test sets up, and what reached the frameworks.
namespace standin {

struct Stage {
  // The window list; null for none.
  NSArray* windows = nil;
  // The keychain's items, and the last query.
  NSMutableArray* keychain = [[NSMutableArray alloc] init];
  NSDictionary* lastQuery = nil;
  // What getShareableContent answers, or the name of an exception to throw.
  SCShareableContent* content = nil;
  NSError* contentError = nil;
  bool throws = false;
  bool refusesOutputs = false;
  // The trust check's options.
  NSDictionary* trustOptions = nil;
  std::string uuid = "11111111-2222-3333-4444-555555555555";

  ~Stage();
};
Stage& stage();
// Empties the stage.
void clear();

// Sends a notification to every observer that watches for it, if the main run loop has its source.
void notify(const std::string& name);

SCWindow* makeWindow(unsigned number, NSString* title, SCRunningApplication* owner);
SCRunningApplication* makeApplication(NSString* bundle, int pid);
SCShareableContent* makeContent(NSArray* windows, NSArray* applications, NSArray* displays);
// Hands a sample to the outputs of all streams that run; `status` becomes its frame status.
void deliverSample(int status);
// Ends all streams as if by the system.
void failStreams();

}  // namespace standin
