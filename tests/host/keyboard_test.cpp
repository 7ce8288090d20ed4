// The windows of the desktop for those who use keys or a screen reader.
#include <QComboBox>
#include <QLineEdit>
#include <QMenuBar>
#include <QScrollBar>
#include <QStyleFactory>
#include <QTabBar>
#include <QTableView>
#include <QToolButton>

#include "host/desktop/window_keys.h"
#include "tests/host/desktop_window.h"

namespace vastra {
namespace {

// The widgets that Tab reaches.
std::vector<QWidget*> TabStops(const QWidget& window) {
  std::vector<QWidget*> stops;
  for (QWidget* widget : window.findChildren<QWidget*>())
    if (widget->window() == &window && widget->isVisible() && widget->isEnabled() && !widget->focusProxy() &&
        (widget->focusPolicy() & Qt::TabFocus) == Qt::TabFocus)
      stops.push_back(widget);
  return stops;
}

// What a screen reader says of widget.
QString SpokenName(QWidget* widget) {
  if (const auto* button = qobject_cast<QAbstractButton*>(widget); button && !button->text().isEmpty())
    return button->text();
  return widget->accessibleName();
}

// The pixels in and around widget.
QImage PictureOf(const QWidget* widget) {
  const QPoint corner = widget->mapTo(widget->window(), QPoint(-3, -3));
  return widget->window()->grab(QRect(corner, widget->size() + QSize(6, 6))).toImage();
}

int Distance(const QColor& first, const QColor& second) {
  return std::max({std::abs(first.red() - second.red()), std::abs(first.green() - second.green()),
                   std::abs(first.blue() - second.blue())});
}

// How many pixels differ so much that an eye sees it.
int SeenDifference(const QImage& first, const QImage& second) {
  int count = 0;
  for (int y = 0; y < first.height(); ++y)
    for (int x = 0; x < first.width(); ++x)
      count += Distance(first.pixelColor(x, y), second.pixelColor(x, y)) > 30;
  return count;
}

// Moves the focus from stop to another one, if possible of the same kind: without a focus on any button, the
// first one looks as if it had it.
void LeaveFor(const std::vector<QWidget*>& all, QWidget* stop) {
  stop->setFocus(Qt::TabFocusReason);
  stop->clearFocus();
  for (QWidget* other : all)
    if (other != stop && other->metaObject() == stop->metaObject())
      return other->setFocus(Qt::TabFocusReason);
}

// The windows of the desktop itself.
std::vector<QWidget*> Windows() {
  std::vector<QWidget*> windows;
  for (QWidget* window : QApplication::topLevelWidgets())
    if (window->isVisible() && window->windowTitle() != "Messages") windows.push_back(window);
  return windows;
}

class Keyboard : public Desktop {
 protected:
  Keyboard() { QApplication::setStyle("Fusion"); }
  ~Keyboard() override { QApplication::setPalette(m_light); }
  const QPalette m_light = QApplication::palette();
};

TEST_F(Keyboard, EachStopHasANameAndShowsTheFocusAlsoInADarkPalette) {
  for (const bool isDark : {false, true}) {
    CSettings().Set("Colours", isDark ? "dark" : "light");
    CColours::UseChosen(CSettings());
    CTestWindow main(m_demo);
    EXPECT_EQ(main.palette().color(QPalette::Base).lightness() < 128, isDark);
    for (const char* action :
         {"Values", "Message Log", "Guide", "Report", "Check", "Equation Editor", "Chart"})
      ActionOf(main, action)->trigger();
    int stops = 0;
    for (QWidget* window : Windows()) {
      window->activateWindow();
      ASSERT_TRUE(Wait([&] { return QApplication::activeWindow() == window; }));
      window->setAttribute(Qt::WA_KeyboardFocusChange);  // as after the first Tab
      const std::vector<QWidget*> all = TabStops(*window);
      for (QWidget* stop : all) {
        const std::string where = window->windowTitle().toStdString() + ", " +
                                  stop->metaObject()->className() + " " + SpokenName(stop).toStdString();
        EXPECT_FALSE(SpokenName(stop).isEmpty()) << where;
        LeaveFor(all, stop);
        QTest::qWait(20);
        const QImage before = PictureOf(stop);
        stop->setFocus(Qt::TabFocusReason);
        QTest::qWait(20);
        EXPECT_GT(SeenDifference(before, PictureOf(stop)), 10) << where << (isDark ? ", dark" : "");
        ++stops;
      }
    }
    EXPECT_GT(stops, 12);
  }
}

TEST_F(Keyboard, AWindowThatAKeyOpenedShowsItsFocusAndIsClosedByAKey) {
  const CWindowKeys keys;
  CTestWindow main(m_demo);
  QTest::keyClick(&main, Qt::Key_F12);
  ActionOf(main, "Values")->trigger();
  QWidget* values = TopLevel("Values");
  EXPECT_TRUE(values->testAttribute(Qt::WA_KeyboardFocusChange));
  auto* search = Find<QLineEdit>(values, "Search");
  ASSERT_TRUE(Wait([&] { return QApplication::activeWindow() == values; }));
  search->setFocus();
  QTest::keyClick(search, Qt::Key_Down);
  EXPECT_TRUE(Find<QTableView>(values, "Values")->hasFocus());
  search->setText("no such variable");
  QTest::keyClick(search, Qt::Key_W, Qt::ControlModifier);
  EXPECT_FALSE(values->isVisible());
  ActionOf(main, "Values")->trigger();
  EXPECT_EQ(search->text(), "") << "a search that was kept and finds nothing";
  QTest::keyClick(&main, Qt::Key_W, Qt::ControlModifier);
  EXPECT_TRUE(main.isVisible());
}

}  // namespace
}  // namespace vastra
