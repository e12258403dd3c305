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
  // The scale of the window that views are in; 0 for none.
  double windowScale = 0;
  // Whether a display layer takes samples, and whether it has failed.
  bool layerIsBusy = false, layerHasFailed = false;
  // What was posted, warped to or opened, in words.
  std::vector<std::string> posted;
  // The format of the input device, and the device that the input unit was given.
  double inputRate = 48000;
  unsigned inputChannels = 2, chosenDevice = 0;
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
void deliverSample(int status, CVPixelBufferRef image = nullptr);
// What the display layers hold, oldest first.
std::vector<CVPixelBufferRef> shown();
// A key press in another application, or in this one.
void press(unsigned short keyCode, bool elsewhere);
// Tells every view that it has come into another window.
void moveViews();
// Sound for every tap of an input node: `frames` of `level` on all channels.
void tap(unsigned frames, float level);
// What the source nodes render, mixed.
std::vector<float> render(unsigned frames, unsigned channels);
// Ends all streams as if by the system.
void failStreams();

}  // namespace standin
