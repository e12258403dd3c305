#pragma once

#include <atomic>
#include <cstdint>
#include <optional>
#include <string>
#include <thread>

#include "support/canvas.h"
#include "torture/bounded_calls.h"
#include "torture/services.h"

namespace vlm::test {

// What a screen-sharing host does, all of it at once: captures, encodes, decodes, presents, tracks,
// plays, listens, types, and keeps a secret. Made and ended on the main thread.
class Session {
 public:
  Session(Services& services, BoundedCalls& calls);
  ~Session();
  Session(const Session&) = delete;
  Session& operator=(const Session&) = delete;

  // What does not run yet; empty for a session that is whole.
  std::string missing() const;
  // How often something was heard.
  int heard() const { return heard_; }
  static bool sawWrongSecret() { return wrongSecret_; }

 private:
  static void onScreen(void* pixbuf, int32_t width, int32_t height, int64_t pts, void* self);
  static void onWindow(void* pixbuf, int32_t width, int32_t height, int64_t pts, void* self);
  static void onEncoded(const uint8_t* data, int32_t size, bool keyframe, int64_t pts, void* self);
  static void onDecoded(void* pixbuf, int32_t width, int32_t height, int64_t pts, void* self);
  static void onSystemAudio(const float*, int32_t, int32_t, int32_t, void* self);
  static void onMicrophone(const float*, int32_t, void* self);
  static void onKey(int32_t key);

  void startPicture(std::uint32_t window);
  void startSound();
  void makeHostWindow();
  void sing(const std::stop_token& stop, const std::string& effect);
  void poke(const std::stop_token& stop, std::int32_t pid, std::uint32_t window);
  void keepSecrets(const std::stop_token& stop);

  BoundedCalls& calls_;
  void* encoder_ = nullptr;
  void* decoder_ = nullptr;
  void* presenter_ = nullptr;
  void* screen_ = nullptr;
  void* window_ = nullptr;
  void* application_ = nullptr;
  void* tracker_ = nullptr;
  void* microphone_ = nullptr;
  std::optional<Canvas> host_;
  std::atomic<int> windowFrames_ = 0, shown_ = 0, heard_ = 0, systemAudio_ = 0, secrets_ = 0,
                   listed_ = 0;
  static inline std::atomic<int> keys_ = 0;
  static inline std::atomic<bool> wrongSecret_ = false;
  std::jthread singer_, poker_, keeper_;
};

}  // namespace vlm::test
