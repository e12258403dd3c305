// Places the view by Qt's own embedding, which sizes it: it leaves a margin in the window.
#include <QApplication>
#include <QPointer>
#include <QResizeEvent>
#include <QWidget>
#include <QWindow>
#include <map>

#include "toolkits/host.h"

namespace vlm::test {
namespace {

class QtHostWindow final : public HostWindow, private QWidget {
 public:
  explicit QtHostWindow(const std::string& title) {
    setWindowTitle(QString::fromStdString(title));
    setStyleSheet("background: white");
    QWidget::resize(kHostWidth, kHostHeight);
    QWidget::show();
  }

  void embed(std::uint32_t view) override {
    // One container at a time holds a view: its end unmaps the view.
    static std::map<std::uint32_t, QPointer<QWidget>> containers;
    delete containers[view];
    containers[view] = container_ = createWindowContainer(QWindow::fromWinId(view), this);
    place();
    container_->show();
  }
  void resize(int width, int height) override { QWidget::resize(width, height); }
  void show(bool visible) override { setVisible(visible); }
  void fullScreen(bool full) override { full ? showFullScreen() : showNormal(); }
  // Qt destroys the X window for other flags, and takes embedded windows out before.
  void remake() override {
    setWindowFlag(Qt::WindowMinimizeButtonHint, false);
    QWidget::show();
    QGuiApplication::sync();
  }

 private:
  void resizeEvent(QResizeEvent*) override { place(); }
  void place() {
    if (container_ != nullptr) container_->setGeometry(rect().adjusted(20, 20, -20, -20));
  }

  QPointer<QWidget> container_;
};

}  // namespace
}  // namespace vlm::test

int main(int argc, char** argv) {
  using namespace vlm::test;
  QApplication application(argc, argv);
  application.setQuitOnLastWindowClosed(false);
  serve(
      std::stoi(argv[1]),
      [](const std::string& title) { return std::make_unique<QtHostWindow>(title); },
      [] { QApplication::quit(); });
  return QApplication::exec();
}
