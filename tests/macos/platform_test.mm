#import <CoreGraphics/CoreGraphics.h>
#import <Foundation/Foundation.h>
#import <Security/Security.h>
#include <gtest/gtest.h>

#include <string>
#include <thread>
#include <vector>

#include "platform/application_services.h"
#include "platform/av_foundation.h"
#include "platform/cg_window.h"
#include "platform/core_foundation.h"
#include "platform/core_media.h"
#include "platform/dispatch.h"
#include "platform/foundation.h"
#include "platform/io_kit.h"
#include "platform/json.h"
#include "platform/macos/bridge/guard.h"
#include "platform/macos/bridge/sample_attachments.h"
#include "platform/macos/bridge/values.h"
#include "platform/screen_capture_kit.h"
#include "platform/security.h"
#include "standin/objects.h"
#include "standin/stage.h"

namespace vlm::platform {
namespace {

using standin::stage;

TEST(Platform, ValuesOfEveryKindCrossBothWays) {
  @autoreleasepool {
    const auto element = AXUIElementCreateApplication(1);
    const CFValue values[] = {
        true,
        false,
        std::int64_t{-5'000'000'000},
        1.5,
        "text",
        "",
        "caf\u00e9 \U0001F600",
        CFData{},
        CFData{0, 255},
        CFArray{},
        CFArray{1, "two", CFArray{false}},
        CFDictionary{{"a", 1}, {"b", CFDictionary{{"c", 2.0}}}},
        CGPoint{1, 2},
        CGSize{3, 4},
        element};
    for (const auto& value : values) {
      const auto object = bridge::toCF(value);
      ASSERT_TRUE(object);
      EXPECT_EQ(bridge::fromCF(object.get()), value);
    }
    EXPECT_FALSE(bridge::toCF(CFValue()));
    const auto withNull = bridge::toCF(CFArray{CFValue(), 1});
    EXPECT_EQ(bridge::fromCF(withNull.get()), CFValue(CFArray{CFValue(), 1}));
    // Numbers and truths are told apart, and text that is not UTF-8 is refused wherever it is.
    EXPECT_EQ(bridge::fromCF((CFTypeRef)[NSNumber numberWithInt:1]), CFValue(1));
    for (const CFValue& bad : {CFValue("\xff"), CFValue(CFArray{"\xff"}),
                               CFValue(CFDictionary{{"\xff", 1}}),
                               CFValue(CFDictionary{{"a", CFArray{"\xc3"}}})}) {
      EXPECT_FALSE(bridge::toCF(bad));
      EXPECT_FALSE(NSJSONSerializationData(CFArray{bad}));
    }
    // Kinds that no value can express.
    EXPECT_TRUE(bridge::fromCF((CFTypeRef)[NSDate date]).isNull());
  }
}

TEST(Platform, TextIsComparedAsPeopleDo) {
  const struct {
    const char *text, *part;
    bool contains, equal;
  } cases[] = {{"Notes", "notes", true, false},
               {"Notes", "otes.", false, false},
               {"Notes", "", false, false},
               {"caf\u00e9", "caf\u00e9", true, true},
               {"a", "\xff", false, false}};
  for (const auto& each : cases) {
    EXPECT_EQ(localizedCaseInsensitiveContains(each.text, each.part), each.contains) << each.part;
    EXPECT_EQ(helpers::areCanonicallyEqual(each.text, each.part), each.equal) << each.part;
  }
  EXPECT_TRUE(helpers::areCanonicallyEqual("caf\u00e9", "cafe\u0301"));
  // Foundations differ in their spaces.
  auto json = NSJSONSerializationData(CFArray{CFDictionary{{"name", "a\"b"}}});
  ASSERT_TRUE(json);
  std::erase(*json, ' ');
  EXPECT_EQ(*json, R"([{"name":"a\"b"}])");
  EXPECT_TRUE(NSURL::URLWithString("x-apple.systempreferences:com.apple.preference.security"));
}

TEST(Platform, SecretsAreAskedForByTheKeychainsOwnConstants) {
  // A service that is called like a class's constant stays text.
  const CFDictionary base{{std::string(kSecClass), kSecClassGenericPassword},
                          {std::string(kSecAttrService), kSecClassGenericPassword},
                          {std::string(kSecAttrAccount), "me"}};
  auto item = base;
  item.emplace(kSecValueData, CFData{1, 2, 0});
  item.emplace(kSecAttrAccessible, kSecAttrAccessibleAfterFirstUnlock);
  ASSERT_EQ(SecItemAdd(item), errSecSuccess);
  @autoreleasepool {
    NSDictionary* const stored = [stage().keychain objectAtIndex:0];
    EXPECT_TRUE([[stored objectForKey:standin::object(::kSecClass)]
        isEqual:standin::object(::kSecClassGenericPassword)]);
    EXPECT_TRUE([[stored objectForKey:standin::object(::kSecAttrService)] isEqual:@"genp"]);
    EXPECT_EQ([stored count], 5U);
  }
  auto query = base;
  query.emplace(kSecReturnData, true);
  query.emplace(kSecMatchLimit, kSecMatchLimitOne);
  CFValue found;
  ASSERT_EQ(SecItemCopyMatching(query, found), errSecSuccess);
  EXPECT_EQ(found, CFValue(CFData{1, 2, 0}));
  EXPECT_EQ(SecItemDelete(base), errSecSuccess);
  EXPECT_EQ(SecItemDelete(base), errSecItemNotFound);
  auto unknown = base;
  unknown.emplace("label", "x");
  for (const CFValue& bad : {CFValue(), CFValue("x"), CFValue(unknown)}) {
    EXPECT_EQ(SecItemAdd(bad), errSecParam);
    EXPECT_EQ(SecItemCopyMatching(bad, found), errSecParam);
  }
}

TEST(Platform, WindowsKeepTheTypesOfWhatTheyHold) {
  EXPECT_FALSE(CGWindowListCopyWindowInfo(kCGWindowListOptionOnScreenOnly, 0));
  @autoreleasepool {
    const auto key = [](const void* constant) { return standin::object(constant); };
    NSDictionary* const bounds = [NSDictionary
        dictionaryWithObjectsAndKeys:[NSNumber numberWithInt:1], @"an X", [NSNumber numberWithInt:2],
                                     @"a Y", [NSNumber numberWithInt:3], @"a width",
                                     [NSNumber numberWithInt:4], @"a height", nil];
    NSDictionary* const good = [NSDictionary
        dictionaryWithObjectsAndKeys:[NSNumber numberWithInt:42], key(::kCGWindowOwnerPID),
                                     [NSNumber numberWithInt:7], key(::kCGWindowNumber), bounds,
                                     key(::kCGWindowBounds), @"dropped", @"kCGWindowName", nil];
    NSDictionary* const odd = [NSDictionary
        dictionaryWithObjectsAndKeys:@"42", key(::kCGWindowOwnerPID), @"none",
                                     key(::kCGWindowBounds), nil];
    stage().windows = [[NSArray alloc] initWithObjects:good, odd, @"no window", nil];
  }
  const auto windows = CGWindowListCopyWindowInfo(kCGWindowListOptionOnScreenOnly, 0);
  ASSERT_TRUE(windows);
  EXPECT_EQ(*windows,
            (CFArray{CFDictionary{{"kCGWindowOwnerPID", 42},
                                  {"kCGWindowNumber", 7},
                                  {"kCGWindowBounds",
                                   CFDictionary{{"X", 1.0}, {"Y", 2.0}, {"Width", 3.0}, {"Height", 4.0}}}},
                     CFDictionary{{"kCGWindowOwnerPID", "42"}, {"kCGWindowBounds", "none"}},
                     "no window"}));
}

TEST(Platform, ObserversDeliverWhileTheirSourceIsAddedAndTheyLive) {
  std::vector<std::string> heard;
  Ref<AXObserver> observer;
  const auto element = AXUIElementCreateApplication(1);
  ASSERT_EQ(AXObserverCreate(1, [&](std::string_view name) { heard.emplace_back(name); }, observer),
            kAXErrorSuccess);
  ASSERT_EQ(AXObserverAddNotification(*observer, *element, "AXWindowMoved"), kAXErrorSuccess);
  auto& source = AXObserverGetRunLoopSource(*observer);
  standin::notify("AXWindowMoved");
  helpers::addToMainRunLoop(source);
  standin::notify("AXWindowMoved");
  standin::notify("AXWindowResized");
  helpers::removeFromMainRunLoop(source);
  standin::notify("AXWindowMoved");
  helpers::addToMainRunLoop(source);
  observer = nullptr;
  standin::notify("AXWindowMoved");
  EXPECT_EQ(heard, std::vector<std::string>{"AXWindowMoved"});
  CFValue value;
  EXPECT_EQ(AXUIElementCopyAttributeValue(*element, "AXTitle", value), kAXErrorNoValue);
  EXPECT_FALSE(AXIsProcessTrustedWithOptions(
      CFDictionary{{std::string(kAXTrustedCheckOptionPrompt), true}}));
  @autoreleasepool {
    EXPECT_EQ(standin::object(::kCFBooleanTrue),
            [stage().trustOptions objectForKey:standin::object(::kAXTrustedCheckOptionPrompt)]);
  }
  EXPECT_EQ(IORegistryEntryCreateCFProperty(IORegistryEntryFromPath(kIORegistryRootPath),
                                            "IOPlatformUUID"),
            CFValue(stage().uuid));
}

struct Output : SCStreamOutput {
  void didOutputSampleBuffer(SCStream&, CMSampleBuffer& sample, SCStreamOutputType) override {
    statuses.push_back(helpers::sampleAttachment(sample, SCStreamFrameInfoStatus));
    EXPECT_TRUE(helpers::setSampleAttachment(sample, kCMSampleAttachmentKey_NotSync, true));
    EXPECT_EQ(helpers::sampleAttachment(sample, kCMSampleAttachmentKey_NotSync), CFValue(true));
    EXPECT_FALSE(helpers::setSampleAttachment(sample, "unknown", true));
  }
  std::vector<CFValue> statuses;
};
struct Delegate : SCStreamDelegate {
  void didStopWithError(SCStream&, const NSError&) override { ++ends; }
  int ends = 0;
};

std::shared_ptr<const SCShareableContent> ask(std::optional<NSError>* error = nullptr) {
  std::shared_ptr<const SCShareableContent> result;
  const auto answered = dispatch_semaphore_create(0);
  SCShareableContent::getShareableContentExcludingDesktopWindows(
      true, true, [&](auto content, auto problem) {
        result = content;
        if (error != nullptr) *error = problem;
        answered->signal();
      });
  answered->wait();
  return result;
}

TEST(Platform, ContentComesOnceAndWindowsShareTheirApplications) {
  std::optional<NSError> error;
  EXPECT_EQ(ask(&error), nullptr);
  stage().throws = true;
  EXPECT_EQ(ask(&error), nullptr);
  ASSERT_TRUE(error);
  EXPECT_EQ(error->localizedDescription, "no content today");
  stage().throws = false;
  @autoreleasepool {
    ::SCRunningApplication* const notes = standin::makeApplication(@"org.example.notes", 42);
    stage().content = standin::makeContent(
        [NSArray arrayWithObjects:standin::makeWindow(1, @"One", notes),
                                  standin::makeWindow(2, nil, notes), standin::makeWindow(3, @"", nil), nil],
        [NSArray arrayWithObject:notes], [NSArray arrayWithObject:[[[::SCDisplay alloc] init] autorelease]]);
  }
  const auto content = ask();
  ASSERT_EQ(content->windows.size(), 3U);
  EXPECT_EQ(content->windows[0]->title, "One");
  EXPECT_EQ(content->windows[1]->title, std::nullopt);
  EXPECT_EQ(content->windows[2]->title, "");
  EXPECT_EQ(content->windows[0]->owningApplication, content->applications[0]);
  EXPECT_EQ(content->windows[1]->owningApplication, content->applications[0]);
  EXPECT_EQ(content->windows[2]->owningApplication, nullptr);
  EXPECT_EQ(content->displays[0]->frame.size.width, 1920);
  const auto filter = SCContentFilter::initWithDisplayIncludingApplications(
      content->displays[0], content->applications, {content->windows[0]});
  EXPECT_EQ(filter->pointPixelScale(), 2);
  stage().throws = true;
  EXPECT_EQ(SCContentFilter::initWithDesktopIndependentWindow(content->windows[0]), nullptr);
}

TEST(Platform, StreamsHandOverWhileTheirReceiversLive) {
  @autoreleasepool {
    stage().content = standin::makeContent(
        [NSArray arrayWithObject:standin::makeWindow(1, @"One", nil)], [NSArray array], [NSArray array]);
  }
  const auto filter = SCContentFilter::initWithDesktopIndependentWindow(ask()->windows[0]);
  auto output = std::make_shared<Output>();
  auto delegate = std::make_shared<Delegate>();
  auto stream = SCStream::initWithFilter(filter, {}, delegate);
  stage().refusesOutputs = true;
  EXPECT_TRUE(stream->addStreamOutput(output, SCStreamOutputType::screen, nullptr));
  stage().refusesOutputs = false;
  ASSERT_FALSE(stream->addStreamOutput(output, SCStreamOutputType::screen, nullptr));
  std::vector<std::string> answers;
  const auto answered = dispatch_semaphore_create(0);
  const auto note = [&](std::optional<NSError> error) {
    answers.push_back(error ? error->localizedDescription : "fine");
    answered->signal();
  };
  stage().throws = true;
  stream->startCaptureWithCompletionHandler(note);
  stage().throws = false;
  answered->wait();
  stream->startCaptureWithCompletionHandler(note);
  answered->wait();
  EXPECT_EQ(answers, (std::vector<std::string>{"no start today", "fine"}));

  standin::deliverSample(0);
  EXPECT_EQ(output->statuses, std::vector<CFValue>{0});
  standin::failStreams();
  standin::failStreams();
  EXPECT_EQ(delegate->ends, 1);
  // The receiver has gone, the stream has not; then the stream has gone as well.
  output = nullptr;
  standin::deliverSample(0);
  stream = nullptr;
  standin::deliverSample(0);
  standin::failStreams();
}

TEST(Platform, QueuesRunJobsInOrderAndLetThemGo) {
  const auto queue = dispatch_queue_create("vlm.test", DispatchQoS::userInteractive);
  EXPECT_EQ(queue->label(), "vlm.test");
  std::vector<int> order;
  const auto token = std::make_shared<int>();
  for (int i = 0; i < 3; ++i) queue->async([&order, i, token] { order.push_back(i); });
  bool onMain = true;
  queue->sync([&] { onMain = NSThread::isMainThread(); });
  EXPECT_FALSE(onMain);
  EXPECT_TRUE(NSThread::isMainThread());
  EXPECT_EQ(order, (std::vector<int>{0, 1, 2}));
  EXPECT_EQ(token.use_count(), 1);
  const auto semaphore = dispatch_semaphore_create(1);
  semaphore->wait();
  queue->async([&] { semaphore->signal(); });
  semaphore->wait();
  queue->sync([] {});
}

TEST(Platform, LayersEndOnTheMainThread) {
  auto layer = AVSampleBufferDisplayLayer::make();
  std::thread([last = std::move(layer)]() mutable { last = nullptr; }).join();
  standin::runMainQueue();
}

TEST(Platform, ExceptionsOfBothLanguagesKeepToTheirOwn) {
  const auto reason = bridge::guarded([] { [NSException raise:@"A" format:@"b"]; });
  ASSERT_TRUE(reason);
  EXPECT_EQ(reason->localizedDescription, "b");
  EXPECT_THROW(bridge::guarded([] { throw std::runtime_error("c"); }), std::runtime_error);
}

}  // namespace
}  // namespace vlm::platform
