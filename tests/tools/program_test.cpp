#include <gtest/gtest.h>

#include <filesystem>
#include <fstream>
#include <functional>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

#include "support/child_process.h"
#include "support/private_desktop.h"
#include "support/private_sound_server.h"
#include "support/scratch_folder.h"

namespace vlm::test {
namespace {

namespace fs = std::filesystem;
using Json = nlohmann::json;
using Words = std::vector<std::string>;

Words vlm(Words arguments) {
  arguments.insert(arguments.begin(), VLM_PROGRAM);
  return arguments;
}

// What the library logs may come before the summary.
Json summaryIn(const std::string& output) {
  const auto begin = output.find('{');
  return begin == std::string::npos ? Json() : Json::parse(output.substr(begin), nullptr, false);
}

Json probe(const std::string& stream) {
  return Json::parse(outputOf({"ffprobe", "-v", "error", "-count_frames", "-show_streams",
                               "-show_frames", "-of", "json", stream}));
}

std::size_t keyframes(const Json& probed) {
  std::size_t count = 0;
  for (const Json& frame : probed["frames"]) count += frame["key_frame"] == 1 ? 1 : 0;
  return count;
}

void expectSoundStream(const std::string& path) {
  const auto decoding =
      runCommand({"ffmpeg", "-v", "warning", "-xerror", "-i", path, "-f", "null", "-"});
  EXPECT_EQ(decoding.status, 0);
  EXPECT_EQ(decoding.output, "");
}

// How alike two pictures are, in decibels.
double likeness(const std::string& one, const std::string& other) {
  const auto compared = runCommand({"compare", "-metric", "PSNR", one, other, "null:"});
  return compared.output.starts_with("inf") ? 100 : std::stod(compared.output);
}

// A window in which nothing moves, of colours that a wrong matrix or range would show.
std::uint32_t spawnStillWindow(PrivateDesktop& desktop, const std::string& title) {
  return desktop.spawnWindow(
      {"xterm", "-T", title, "-geometry", "60x20+40+40", "-bg", "#2a6f97", "-fg", "#f4d35e", "-cr",
       "#2a6f97", "-e", "printf 'Nothing moves here.'; sleep 600"},
      title);
}

std::string hex(std::uint32_t id) {
  std::ostringstream text;
  text << "0x" << std::hex << id;
  return text.str();
}

TEST(Program, LoopbackShowsAndRecordsAStillWindowWithTheKeyFramesAskedFor) {
  PrivateDesktop desktop({1280, 720});
  const ScratchFolder folder;
  const auto window = spawnStillWindow(desktop, "Still");
  const auto original = folder.file("original.png");
  outputOf({"import", "-silent", "-window", std::to_string(window), original});

  const auto recording = folder.file("loopback.h264");
  const auto shown = folder.file("shown.png");
  const auto result = runCommand(
      vlm({"loopback", "--window", hex(window), "--seconds", "3.5", "--keyframe-every", "1",
           "--viewer", "400x300+800+300", "--record", recording, "--snapshot", shown, "--json"}));
  ASSERT_EQ(result.status, 0) << result.output;
  const Json summary = summaryIn(result.output);
  EXPECT_GE(summary["keyframes"], 4);
  EXPECT_EQ(summary["shown"], summary["encoded"]);
  EXPECT_EQ(summary["ended"], "time is up");
  EXPECT_GT(likeness(original, shown), 30);

  const Json probed = probe(recording);
  expectSoundStream(recording);
  EXPECT_EQ(probed["frames"].size(), summary["encoded"]);
  EXPECT_EQ(keyframes(probed), summary["keyframes"]);
}

TEST(Program, RecordChangesSizeAndBitRateOnTheWay) {
  PrivateDesktop desktop({1280, 720});
  const ScratchFolder folder;
  desktop.spawnWindow(
      {"xterm", "-T", "Busy", "-e", "while :; do head -c 400 /dev/urandom | base64; done"}, "Busy");
  const auto recording = folder.file("changing.h264");
  const auto result =
      runCommand(vlm({"record", recording, "--seconds", "3", "--bitrate", "8M", "--bitrate-change",
                      "2M@1.5", "--max-size-change", "640x360@1.5", "--json"}));
  ASSERT_EQ(result.status, 0) << result.output;
  const Json probed = probe(recording);
  const Json& first = probed["frames"].front();
  const Json& last = probed["frames"].back();
  EXPECT_EQ(first["width"], 1280);
  EXPECT_EQ(last["width"], 640);
  EXPECT_EQ(last["height"], 360);
  EXPECT_EQ(keyframes(probed), 2U);
  expectSoundStream(recording);
}

TEST(Program, PlayShowsEveryFrameOfAForeignStream) {
  PrivateDesktop desktop({1280, 720});
  const ScratchFolder folder;
  const auto stream = folder.file("foreign.h264");
  const auto last = folder.file("last.png");
  const auto shown = folder.file("shown.png");
  outputOf({"ffmpeg", "-v", "error", "-f", "lavfi", "-i", "testsrc2=s=640x360:r=25:d=1", "-c:v",
            "libx264", "-pix_fmt", "yuv420p", "-bf", "0", "-x264-params",
            "slices=4:aud=1:keyint=10", stream});
  outputOf(
      {"ffmpeg", "-v", "error", "-i", stream, "-vf", "select=eq(n\\,24)", "-frames:v", "1", last});
  const auto result =
      runCommand(vlm({"play", stream, "--fps", "25", "--snapshot", shown, "--json"}));
  ASSERT_EQ(result.status, 0) << result.output;
  const Json summary = summaryIn(result.output);
  EXPECT_EQ(summary["decoded"], 25);
  EXPECT_EQ(summary["keyframes"], 3);
  EXPECT_GT(likeness(last, shown), 30);
}

TEST(Program, SaysInOneSentenceWhyItCantAndReturnsNonZero) {
  PrivateDesktop desktop({640, 480, false});
  const ScratchFolder folder;
  const auto noise = folder.file("noise.h264");
  std::ofstream(noise) << "This is no video.";
  struct Case {
    Words arguments;
    int status;
    std::string sentence;
  };
  for (const auto& [arguments, status, sentence] : std::vector<Case>{
           {{"record", folder.file("x"), "--window", "0x123"},
            1,
            "no window 0x123 is on the screen"},
           {{"record", folder.file("x"), "--app", "Nobody"}, 1, "no application whose name"},
           {{"record", folder.file("x"), "--display", "99"}, 1, "there is no display 99"},
           {{"find-window", "--title", "nowhere"}, 1, "no such window is on the screen"},
           {{"record", "/nowhere/x.h264"}, 1, "can't write /nowhere/x.h264: No such file"},
           {{"record", "/dev/full", "--seconds", "1"}, 1, "can't write /dev/full: No space left"},
           {{"play", folder.file("absent")}, 1, "can't read"},
           {{"play", noise}, 1, "holds no H.264 byte stream"},
           {{"loopback", "--bitrate", "8X"}, 2, "--bitrate"},
           {{"loopback", "--window", "1", "--app", "x"}, 2, "--window"},
           {{}, 2, "A subcommand is required"}}) {
    const auto result = runCommand(vlm(arguments));
    EXPECT_EQ(result.status, status) << result.output;
    EXPECT_NE(result.output.find(sentence), std::string::npos) << result.output;
  }
  desktop.killServer();
  const auto unreachable = runCommand(vlm({"loopback"}));
  EXPECT_EQ(unreachable.status, 1);
  EXPECT_NE(unreachable.output.find("can't be reached"), std::string::npos) << unreachable.output;
}

TEST(Program, ListsTheDisplaysThatItShares) {
  PrivateDesktop desktop({640, 480, false});
  outputOf({"xrandr", "--setmonitor", "left", "400/100x480/100+0+0", "screen"});
  outputOf({"xrandr", "--setmonitor", "right", "240/60x300/75+400+50", "none"});
  const ScratchFolder folder;
  Words names;
  for (const Json& display : Json::parse(outputOf(vlm({"displays", "--json"})))) {
    names.push_back(display["name"].get<std::string>());
    const auto at = [&](const char* key) { return std::to_string(display[key].get<int>()); };
    const auto frame = " " + at("width") + "/\\d+x" + at("height") + "/\\d+\\+" + at("x") + "\\+" +
                       at("y") + "  ?";
    EXPECT_TRUE(std::regex_search(outputOf({"xrandr", "--listmonitors"}),
                                  std::regex(names.back() + frame)));
    const auto stream = folder.file(names.back());
    outputOf(vlm({"record", stream, "--display", at("id"), "--seconds", "0.5"}));
    const auto probed = probe(stream);
    EXPECT_EQ(probed["streams"][0]["width"], display["width"]);
  }
  EXPECT_EQ(names, (Words{"left", "right"}));
}

// What ffprobe says of the one stream of a WAV file.
void expectFloats(const std::string& path, int channels, double seconds) {
  const Json stream = probe(path)["streams"][0];
  EXPECT_EQ(stream["codec_name"], "pcm_f32le");
  EXPECT_EQ(stream["sample_rate"], "48000");
  EXPECT_EQ(stream["channels"], channels);
  EXPECT_NEAR(std::stod(stream["duration"].get<std::string>()), seconds, 0.3);
}

TEST(Program, PlaysAndRecordsSound) {
  PrivateDesktop desktop({640, 480, false});
  PrivateSoundServer server;
  EXPECT_EQ(Json::parse(outputOf(vlm({"devices", "--json"})))["inputs"][0]["uid"], "mic");
  const ChildProcess tone(vlm({"tone", "--device", "micfeed", "--level", "0.5"}));
  const auto heard = server.file("heard.wav");
  const auto levels =
      Json::parse(outputOf(vlm({"mic", "--seconds", "1.5", "--wav", heard, "--json"})));
  EXPECT_NEAR(levels["rmsDb"].get<double>(), -9, 1);
  expectFloats(heard, 1, 1.5);
  const auto others = server.file("others.wav");
  outputOf(vlm({"record", server.file("x.h264"), "--audio", others, "--seconds", "1"}));
  expectFloats(others, 2, 1);
  EXPECT_EQ(runCommand(vlm({"play-sound", heard, "--from", "1"})).status, 0);
  server.kill();
  for (const Words& command : {Words{"tone"}, {"mic"}, {"play-sound", heard}}) {
    EXPECT_EQ(runCommand(vlm(command)).status, 1) << command[0];
  }
}

TEST(Program, EndsWithASummaryHoweverItIsEnded) {
  struct Case {
    std::function<void(PrivateDesktop&, ChildProcess& program, std::uint32_t window)> end;
    int status;
    std::string ended;
  };
  const std::vector<Case> cases{
      {[](auto&, auto& program, auto) { program.signal(SIGINT); }, 0, "interrupted"},
      {[](auto&, auto& program, auto) { program.signal(SIGTERM); }, 0, "interrupted"},
      {[](auto&, auto&, auto) {
         outputOf({"wmctrl", "-c", "Loopback of"});
       },
       0, "the viewer window was closed"},
      {[](auto&, auto&, auto window) {
         outputOf({"xkill", "-id", std::to_string(window)});
       },
       0, "the captured window was closed"},
      {[](auto& desktop, auto&, auto) { desktop.killServer(); }, 1,
       "the connection to the X server was lost"}};
  for (const auto& [end, status, ended] : cases) {
    SCOPED_TRACE(ended);
    PrivateDesktop desktop({1280, 720});
    const ScratchFolder folder;
    const auto window = spawnStillWindow(desktop, "Target");
    const auto recording = folder.file("recording.h264");
    const auto output = folder.file("output");
    ChildProcess program({"sh", "-c", "exec \"$0\" \"$@\" >" + output, VLM_PROGRAM, "loopback",
                          "--window", hex(window), "--record", recording, "--json",
                          "--keyframe-every", "0.2"});
    const auto viewerIsThere = [] {
      return runCommand({"xdotool", "search", "--onlyvisible", "--name", "Loopback of"}).status ==
             0;
    };
    ASSERT_TRUE(eventually(viewerIsThere));
    ASSERT_TRUE(eventually([&] { return fs::exists(recording) && fs::file_size(recording) > 0; }));
    end(desktop, program, window);
    EXPECT_EQ(program.wait(), status);
    EXPECT_EQ(summaryIn(contentsOf(output))["ended"], ended);
    EXPECT_GT(probe(recording)["frames"].size(), 0U);
  }
}

}  // namespace
}  // namespace vlm::test
