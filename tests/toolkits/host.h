#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

// A host program that shows views in windows of its toolkit and does what a test asks of it. The
// test talks to it over a socket, one line a command:
//
//   open W, close W          makes a window with that title, ends it
//   embed P W                places the view of presenter P, made when it is new, in window W;
//                            the answer names the view's X window
//   resize W width height, show W, hide W, full W, restore W
//   remake W                 an ordinary call of the toolkit that destroys the X window
//   destroy P                ends the presenter
//   watch pid                follows the process's windows
//   report P                 answers with what P's last frame got, events of windows and keys
//
// Each is answered with one line. Every presenter is handed a frame every 20 ms.
namespace vlm::test {

class HostWindow {
 public:
  virtual ~HostWindow() = default;
  virtual void embed(std::uint32_t view) = 0;
  virtual void resize(int width, int height) = 0;
  virtual void show(bool visible) = 0;
  virtual void fullScreen(bool full) = 0;
  virtual void remake() = 0;
};

using OpenWindow = std::function<std::unique_ptr<HostWindow>(const std::string& title)>;

// Serves the test on the socket of this number, from the main loop that the host runs.
void serve(int socket, OpenWindow open, std::function<void()> quit);

constexpr int kHostWidth = 320;
constexpr int kHostHeight = 240;

}  // namespace vlm::test
