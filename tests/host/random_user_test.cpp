// A user who presses, types, drags and scrolls anything anywhere while the logger runs: nothing crashes or
// hangs, and the logger can be stopped at the end.
#include <QAbstractButton>
#include <QAbstractItemView>
#include <QDesktopServices>
#include <QMenu>
#include <QWheelEvent>

#include <cstdlib>
#include <random>

#include "host/desktop/chart_windows.h"
#include "tests/host/desktop_window.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

// Opens what the user wants to see outside of the program.
class CNoBrowser : public QObject {
  Q_DISABLE_COPY_MOVE(CNoBrowser)
 public:
  CNoBrowser() {
    for (const char* scheme : kSchemes) QDesktopServices::setUrlHandler(scheme, this, "close");
  }
  ~CNoBrowser() override {
    for (const char* scheme : kSchemes) QDesktopServices::unsetUrlHandler(scheme);
  }

 private:
  static constexpr const char* kSchemes[] = {"file", "http", "https"};
};

class RandomUser : public Desktop {
 protected:
  RandomUser() { ::setenv("HOME", m_dir.Path(), 1); }

  int Below(auto end) { return static_cast<int>(m_random() % std::max(static_cast<unsigned>(end), 1U)); }
  // Null of an empty list.
  template <class T>
  T* AnyOf(const QList<T*>& items) {
    return items.value(Below(items.size()));
  }
  // The window that takes input: a menu, a modal window, or any.
  QWidget* AnyWindow() {
    if (QWidget* menu = QApplication::activePopupWidget()) return menu;
    if (QWidget* modal = QApplication::activeModalWidget()) return modal;
    QList<QWidget*> windows;
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window->isVisible()) windows << window;
    return AnyOf(windows);
  }
  QWidget* AnyWidget(QWidget* window) {
    QList<QWidget*> widgets;
    for (QWidget* widget : window->findChildren<QWidget*>())
      if (widget->isVisible() && widget->isEnabled() && widget->window() == window) widgets << widget;
    return widgets.isEmpty() ? window : AnyOf(widgets);
  }
  QPoint AnyPlace(const QWidget* widget) { return {Below(widget->width()), Below(widget->height())}; }
  void TriggerAny(QWidget* window) {
    QList<QAction*> actions;
    for (QAction* action : window->findChildren<QAction*>())
      if (action->isEnabled() && action->isVisible() && !action->menu() &&
          action->text().remove('&') != "Quit")
        actions << action;
    if (QAction* action = AnyOf(actions)) action->trigger();
  }
  void Type(QWidget* widget) {
    constexpr Qt::Key kKeys[] = {Qt::Key_Return, Qt::Key_Escape, Qt::Key_Tab,  Qt::Key_Delete,
                                 Qt::Key_Down,   Qt::Key_Up,     Qt::Key_Left, Qt::Key_Right,
                                 Qt::Key_Home,   Qt::Key_End,    Qt::Key_Plus, Qt::Key_Minus,
                                 Qt::Key_PageUp, Qt::Key_F1,     Qt::Key_F5,   Qt::Key_A,
                                 Qt::Key_C,      Qt::Key_W,      Qt::Key_1,    Qt::Key_Space};
    constexpr Qt::KeyboardModifier kModifiers[] = {Qt::NoModifier, Qt::NoModifier, Qt::ShiftModifier,
                                                   Qt::AltModifier};
    QTest::keyClick(widget, kKeys[Below(std::size(kKeys))], kModifiers[Below(std::size(kModifiers))]);
  }
  void Press(QWidget* widget) {
    const QPointer<QWidget> kept = widget;
    const Qt::MouseButton button = Below(6) ? Qt::LeftButton : Qt::RightButton;
    const QPoint from = AnyPlace(widget), to = AnyPlace(widget);
    if (Below(8) == 0) return QTest::mouseDClick(widget, button, {}, from);
    QTest::mousePress(widget, button, {}, from);
    if (kept && Below(2)) QTest::mouseMove(widget, to);
    if (kept) QTest::mouseRelease(widget, button, {}, Below(2) ? to : from);
  }
  void Act() {
    QWidget* const window = AnyWindow();
    if (!window) return;
    QWidget* const widget = AnyWidget(window);
    switch (Below(6)) {
      case 0:
        return TriggerAny(window);
      case 1:
        return Type(widget);
      case 2: {
        const QPointF place = AnyPlace(widget);
        QWheelEvent turn(place, widget->mapToGlobal(place), {}, {0, Below(2) ? 120 : -120}, Qt::NoButton, {},
                         Qt::NoScrollPhase, false);
        QApplication::sendEvent(widget, &turn);
        return;
      }
      case 3:
        if (auto* const button = qobject_cast<QAbstractButton*>(widget)) return button->click();
        [[fallthrough]];
      default:
        Press(widget);
    }
  }
  // Closes what is over the main window.
  static void CloseOthers(const QWidget& main) {
    for (QWidget* window : QApplication::topLevelWidgets())
      if (window->isVisible() && window != &main) window->close();
  }

  std::mt19937 m_random;
};

TEST_F(RandomUser, DoesWhatNobodyHasThoughtOf) {
  const char* const given = std::getenv("SEED");
  const auto seed = given ? static_cast<unsigned>(std::atoi(given)) : std::random_device{}();
  m_random.seed(seed);
  SCOPED_TRACE("SEED=" + std::to_string(seed));
  std::printf("SEED=%u\n", seed);
  std::fflush(stdout);
  int left = std::getenv("VASTRA_PROVE") ? 20000 : 500;
  const CNoBrowser none;
  const QtMessageHandler former = qInstallMessageHandler(
      [](QtMsgType, const QMessageLogContext&, const QString&) {});  // events that nothing accepts
  CTestWindow window(m_demo);
  window.boxes.answer = IDNO;
  ASSERT_TRUE(Runs(window));
  auto user = std::make_unique<QObject>();
  // Each act is a timer of its own, so that a modal window that it opens gets the next ones.
  const std::function<void()> act = [&] {
    QTimer::singleShot(0, user.get(), act);
    if (left-- > 0) return Act();
    CloseOthers(window);
  };
  act();
  while (left > 0) QTest::qWait(10);
  EXPECT_TRUE(Wait([&] { return !QApplication::activeModalWidget() && !QApplication::activePopupWidget(); }));
  user.reset();
  window.boxes.Take();
  if (QAction* stop = ActionOf(window, "Stop"); stop->isEnabled()) stop->trigger();
  EXPECT_TRUE(Wait([&] { return Says(window, "Stopped"); }));
  window.boxes.Take();
  qInstallMessageHandler(former);
}

}  // namespace
}  // namespace vastra
