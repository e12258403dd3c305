// Every call of a flow fails once, every answer comes late once, and every allocation of the
// library fails once: the host gets what the flow gives or the stated failure value, and the flow
// works afterwards.
#include <gtest/gtest.h>

#include <cstdlib>
#include <functional>
#include <new>

#include "platform/application_services.h"
#include "stage.h"

namespace {
thread_local int allocationsLeft = -1;  // until one fails; none does while this is negative
thread_local bool inLibrary = false;
}  // namespace

[[gnu::noinline]] void* operator new(std::size_t size) {
  if (inLibrary && allocationsLeft >= 0 && allocationsLeft-- == 0) throw std::bad_alloc();
  if (void* memory = std::malloc(size)) return memory;
  throw std::bad_alloc();
}
[[gnu::noinline]] void operator delete(void* memory) noexcept {
  std::free(memory);
}
[[gnu::noinline]] void operator delete(void* memory, std::size_t) noexcept {
  std::free(memory);
}

namespace vlm::test {
namespace {

constexpr int kPid = 7;

// One run of a flow: what each call of it gave, beside what it gives when it fails.
class Run {
 public:
  explicit Run(Machine& onMachine) : machine(onMachine) {}

  template <class Result, class Call>
  Result call(const char* what, Result failure, Call function) {
    inLibrary = true;
    const Result result = function();
    inLibrary = false;
    const auto text = [&](Result value) {
      if constexpr (std::is_pointer_v<Result>)
        return std::string(value ? "a handle" : "null");
      else
        return std::to_string(value);
    };
    results.push_back({what, text(result), text(failure)});
    return result;
  }
  template <class Call>
  void act(Call function) {
    inLibrary = true;
    function();
    inLibrary = false;
  }
  // What a callback has brought so often.
  void brought(const char* prefix) {
    const auto lines = machine.journal.take(prefix);
    results.push_back({prefix, std::to_string(lines.size()), ""});
  }

  struct Result {
    std::string what, given, failure;
    bool operator==(const Result&) const = default;
  };
  Machine& machine;
  std::vector<Result> results;
};

void noteAudio(const float*, int32_t, int32_t, int32_t, void*) {}
void noteMic(const float*, int32_t, void*) {}
void noteEvent(int32_t, double, double, double, double, void* user) {
  static_cast<Machine*>(user)->journal.note("event");
}
Machine* pressed = nullptr;
void noteKey(int32_t) {
  pressed->journal.note("hot key");
}

void capture(Run& run) {
  auto& machine = run.machine;
  run.call("ready", false, [] { return vlm_screen_capture_ready(); });
  run.call("find", 0U, [] { return vlm_capture_find_window("org", "one"); });
  const std::function<void*()> starts[] = {
      [&] { return vlm_capture_start_display(0, 30, 0, 0, noteFrame, noteAudio, &machine); },
      [&] { return vlm_capture_start_app("org", 30, 32, 24, noteFrame, nullptr, &machine); },
      [&] { return vlm_capture_start_window(3, 30, 0, 0, noteFrame, noteAudio, &machine); }};
  for (const auto& start : starts) {
    void* handle = run.call("start", static_cast<void*>(nullptr), start);
    run.call("bounds", false,
             [&] { return vlm_capture_bounds(handle, nullptr, nullptr, nullptr, nullptr); });
    if (handle != nullptr) {
      const auto time = platform::CMTimeMake(15, 1'000'000'000);
      machine.screen.streams.back().lock()->deliver(
          platform::scripted::makeScreenSample(64, 48, time));
    }
    machine.run();
    run.act([&] { vlm_capture_stop(handle); });
    run.brought("frame");
  }
}

void code(Run& run) {
  auto& machine = run.machine;
  const auto frame = picture(64, 48), other = picture(32, 16);
  const Bytes bgra(32 * 16 * 4),
      unit{0, 0, 1, 0x67, 0, 64, 0, 48, 0, 0, 1, 0x68, 0xEE, 0, 0, 1, 0x65, 0x88};
  void* encoder = run.call("encoder", static_cast<void*>(nullptr), [&] {
    return vlm_enc_create(64, 48, 30, 1'000'000, true, noteEncoded, &machine);
  });
  for (const auto* each : {&frame, &other}) {
    run.call("encode", false, [&] { return vlm_enc_encode(encoder, each->get(), 1, true); });
  }
  run.call("encode BGRA", false,
           [&] { return vlm_enc_encode_bgra(encoder, bgra.data(), 32, 16, 128, 2, false); });
  run.act([&] { vlm_enc_set_bitrate(encoder, 2'000'000); });
  machine.run();
  run.act([&] { vlm_enc_destroy(encoder); });
  run.brought("encoded");
  void* decoder = run.call("decoder", static_cast<void*>(nullptr),
                           [&] { return vlm_dec_create(noteFrame, &machine); });
  for (const int width : {64, 32}) {
    Bytes next = unit;
    next[5] = static_cast<std::uint8_t>(width);
    run.call("decode", false, [&] {
      return vlm_dec_decode(decoder, next.data(), static_cast<int32_t>(next.size()), 1);
    });
  }
  run.act([&] { vlm_dec_flush(decoder); });
  machine.run();
  run.act([&] { vlm_dec_destroy(decoder); });
  run.brought("frame");
  Bytes out(64 * 48 * 4);
  run.call("export", false, [&] {
    return vlm_pixbuf_to_bgra(frame.get(), out.data(), static_cast<int32_t>(out.size()));
  });
}

void present(Run& run) {
  auto& machine = run.machine;
  const auto frame = picture(16, 16);
  void* presenter = run.call("presenter", static_cast<void*>(nullptr), vlm_present_create);
  // A refused hand-over may also be busy or a failure; that it is shown when tried again counts.
  run.act([&] { vlm_present_enqueue(presenter, frame.get(), 1); });
  if (!machine.display.layers.empty()) {
    machine.display.layers.back()->become(
        {.status = platform::AVQueuedSampleBufferRenderingStatus::failed});
  }
  for (int i = 0; i < 62; ++i) {
    run.act([&] { vlm_present_enqueue(presenter, frame.get(), i); });
    machine.run();
  }
  run.act([&] { vlm_present_clear(presenter); });
  run.act([&] { vlm_present_destroy(presenter); });
  machine.run();
  run.brought("layer2 enqueue");
}

void windows(Run& run) {
  auto& machine = run.machine;
  VlmWindowEntry entry;
  run.call("list", 0, [&] { return vlm_window_enumerate(kPid, &entry, 1); });
  run.call("find", 0, [] { return vlm_window_find_pid("org"); });
  const auto bounds = [](auto... out) { return vlm_window_get_bounds(5, out...); };
  run.call("bounds", false, [&] { return bounds(nullptr, nullptr, nullptr, nullptr); });
  run.call("focused", false,
           [] { return vlm_window_focused_bounds(kPid, nullptr, nullptr, nullptr, nullptr); });
  void* tracker = run.call("track", static_cast<void*>(nullptr),
                           [&] { return vlm_window_track(kPid, noteEvent, &machine); });
  machine.desktop.notify("AXWindowMoved");
  machine.run();
  run.act([&] { vlm_window_untrack(tracker); });
  run.brought("event");
}

void input(Run& run) {
  pressed = &run.machine;
  run.act([] { vlm_input_mouse_move(1, 2); });
  run.act([] { vlm_input_mouse_button(1, true, 1, 2); });
  run.act([] { vlm_input_mouse_wheel(1, 2); });
  run.act([] { vlm_input_key(1, true, 0); });
  run.call("pointer", false, [] { return vlm_input_cursor_pos(nullptr, nullptr); });
  run.call("in front", 0, vlm_frontmost_pid);
  run.call("hot keys", false, [] { return vlm_hotkey_monitor_start(noteKey); });
  run.machine.run();
  run.machine.desktop.press(0, true);
  run.machine.run();
  run.act(vlm_hotkey_monitor_stop);
  run.machine.run();
  run.brought("hot key");
}

void system(Run& run) {
  const std::uint8_t secret[] = {1, 2, 3};
  char text[64];
  run.call("set", false, [&] { return vlm_secret_set("s", "a", secret, 3); });
  run.call("get", 0, [] { return vlm_secret_get("s", "a", nullptr, 3); });
  run.call("delete", false, [] { return vlm_secret_delete("s", "a"); });
  run.call("id", 0, [&] { return vlm_machine_id(text, sizeof text); });
  run.call("record", false, [] { return vlm_perm_screen_recording(true); });
  run.call("trusted", false, [] { return vlm_perm_accessibility(true); });
  run.call("settings", false, [] { return vlm_perm_open_settings("screen"); });
}

void sound(Run& run) {
  void* const none = nullptr;
  const float samples[] = {0, 1};
  void* mic =
      run.call("microphone", none, [&] { return vlm_audio_in_start("mic", noteMic, &run); });
  run.act([&] { vlm_audio_in_stop(mic); });
  void* out = run.call("playback", none, [] { return vlm_audio_out_start("spk", 2); });
  run.act([&] { vlm_audio_out_write(out, samples, 2); });
  run.act([&] { vlm_audio_out_stop(out); });
  void* effect = run.call("effect", none, [] { return vlm_sfx_create("/a.wav"); });
  run.act([&] { vlm_sfx_play(effect, 1, 2); });
  run.act([&] { vlm_sfx_play_from(effect, 0.5, 1); });
  run.act([&] { vlm_sfx_seek(effect, 1); });
  run.act([&] { vlm_sfx_stop(effect); });
  run.act([&] { vlm_sfx_destroy(effect); });
}

void setStage(Machine& machine) {
  auto& screen = machine.screen;
  screen.addDisplay(1, {{0, 0}, {64, 48}});
  screen.addWindow(3, "one", {{0, 0}, {200, 200}}, screen.addApplication("org.one"));
  machine.display.viewBounds = {{0, 0}, {8, 6}};
  const CFDictionary attributes{{"AXPosition", platform::CGPoint{1, 2}},
                                {"AXSize", platform::CGSize{30, 40}}};
  const auto window = platform::makeRef<platform::AXUIElement>("w", attributes);
  machine.desktop.applications[kPid] = {
      {"AXWindows", CFArray{window}}, {"AXMainWindow", window}, {"AXFocusedWindow", window}};
  const CFDictionary bounds{{"X", 1}, {"Y", 2}, {"Width", 30}, {"Height", 40}};
  machine.desktop.windowList = CFArray{CFDictionary{
      {"kCGWindowOwnerPID", kPid}, {"kCGWindowNumber", 5}, {"kCGWindowBounds", bounds}}};
  machine.desktop.running = {{"org.one", kPid}};
  machine.desktop.frontmost = machine.desktop.running.front();
  machine.system.grantsScreenOnRequest = machine.system.grantsTrustOnPrompt = true;
  machine.audio.devices = {{7, {1}, {}, "c", "mic"}, {8, {}, {2}, "d", "spk"}};
  machine.audio.files["/a.wav"] = 2.5;
}

constexpr std::pair<const char*, void (*)(Run&)> kFlows[] = {
    {"capture", capture}, {"code", code},     {"present", present}, {"windows", windows},
    {"input", input},     {"system", system}, {"sound", sound}};

struct Sweep {
  // Makes something fail at a position, and says afterwards whether it came to that.
  std::function<void(Machine&, int)> plant;
  std::function<bool(Machine&, int)> happened;
};

void sweep(const char* kind, const Sweep& faults, bool onMainThread) {
  for (const auto& [name, flow] : kFlows) {
    const auto fresh = [&, flow = flow](Machine& machine) {
      Run run(machine);
      flow(run);
      machine.runLate();
      return run.results;
    };
    Machine whole;
    setStage(whole);
    whole.setOnMainThread(onMainThread);
    const auto expected = fresh(whole);
    for (int position = 0;; ++position) {
      SCOPED_TRACE(std::string(name) + ", " + kind + " at " + std::to_string(position));
      Machine machine;
      setStage(machine);
      machine.setOnMainThread(onMainThread);
      faults.plant(machine, position);
      const auto results = fresh(machine);
      const bool happened = faults.happened(machine, position);
      ASSERT_EQ(results.size(), expected.size());
      for (std::size_t i = 0; i < results.size(); ++i) {
        const auto& [what, given, failure] = results[i];
        EXPECT_TRUE(given == expected[i].given || given == failure || failure.empty())
            << what << " gave " << given;
      }
      machine.screen.streams.clear();
      machine.display.layers.clear();
      machine.journal.take();
      const auto again = fresh(machine);
      for (std::size_t i = 0; i < again.size(); ++i) {
        if (std::string_view(again[i].what).starts_with("layer")) continue;
        EXPECT_EQ(again[i].given, expected[i].given) << "again: " << again[i].what;
      }
      if (!happened) {
        std::printf("%s, %s: %d positions\n", name, kind, position);
        break;
      }
    }
  }
}

TEST(Sweep, EveryCallFailsOnce) {
  const std::pair<const char*, platform::scripted::Fault> kinds[] = {
      {"a refusal", {-50, "refused"}},
      {"nothing", {platform::noErr, "", true}},
      {"an exception", {platform::noErr, "", false, true}}};
  for (const auto& [kind, fault] : kinds) {
    const Sweep faults{[fault = fault](Machine& machine, int position) {
                         machine.journal.script("", fault, 1, position);
                       },
                       [](Machine& machine, int position) {
                         for (int i = 0; i <= position; ++i) {
                           try {
                             const auto left = machine.journal.enter("probe");
                             if (left.fails() || left.nothing) return false;
                           } catch (const std::bad_alloc&) {
                             return false;
                           }
                         }
                         return true;
                       }};
    for (const bool onMainThread : {true, false}) sweep(kind, faults, onMainThread);
  }
}

TEST(Sweep, EveryAnswerComesLateOnce) {
  const Sweep faults{[](Machine& machine, int position) { machine.delay(position); },
                     [](Machine& machine, int) { return machine.wasDelayed(); }};
  for (const bool onMainThread : {true, false}) sweep("late", faults, onMainThread);
}

TEST(Sweep, EveryAllocationFailsOnce) {
  const Sweep faults{[](Machine&, int position) { allocationsLeft = position; },
                     [](Machine&, int) { return std::exchange(allocationsLeft, -1) < 0; }};
  for (const bool onMainThread : {true, false}) sweep("no memory", faults, onMainThread);
}

}  // namespace
}  // namespace vlm::test
