// Windows that are larger than the screen, or were placed on another one.
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QScreen>
#include <QScrollArea>
#include <QVBoxLayout>

#include "tests/support/windows.h"
#include "vastra/ui/application.h"
#include "vastra/ui/dialog.h"
#include "vastra/ui/screen_geometry.h"

namespace vastra {
namespace {

constexpr CControl kLargeControls[] = {{CControl::edit, "First", {7, 7, 50, 14}},
                                       {CControl::edit, "Second", {70, 7, 50, 14}},
                                       {CControl::frame, "Plot", {7, 30, 500, 700}},
                                       {CControl::button, "Last", {600, 760, 50, 14}}};
constexpr CDialogTemplate kFixed = {"Large", {660, 780}, kLargeControls};
constexpr CDialogTemplate kResizable = {"Large", {660, 780}, kLargeControls, CDialogTemplate::resizable};

class CLarge : public CDialog {
 public:
  explicit CLarge(const CDialogTemplate& model) : CDialog(model) {}
  ~CLarge() override { Abandon(); }
  bool OnPaint(const CRect&) override {
    painted = true;
    return false;
  }
  bool OnLButtonUp(CPoint point) override {
    clicked = point;
    return true;
  }
  bool painted = false;
  CPoint clicked;
};

class ScreenFit : public testing::Test {
 protected:
  static QRect Free() { return QGuiApplication::primaryScreen()->availableGeometry(); }
  // Whether child is on the screen, as far as its window shows it.
  static bool IsSeen(const QWidget* child) {
    const QRect whole(child->mapToGlobal(QPoint()), child->size());
    return child->visibleRegion().boundingRect().size() == child->size() && Free().contains(whole);
  }
  CWindows m_windows;
};

TEST(ScreenGeometry, AWindowIsAsLargeAndAsNearAsTheScreenAllows) {
  const CRect screen = {100, 50, 900, 650};
  const std::pair<CRect, CRect> cases[] = {{{200, 100, 300, 200}, {200, 100, 300, 200}},
                                           {{2000, 100, 2400, 200}, {500, 100, 900, 200}},
                                           {{-500, -10, -100, 90}, {100, 50, 500, 150}},
                                           {{0, 600, 2560, 900}, {100, 350, 900, 650}},
                                           {{100, 50, 901, 1650}, screen}};
  for (const auto& [wanted, place] : cases) EXPECT_EQ(PutOnto(screen, wanted), place) << wanted.left;
  const std::pair<CSize, CSize> sizes[] = {{{300, 200}, {300, 200}},   // fits
                                           {{300, 900}, {310, 600}},   // one bar beside it
                                           {{795, 900}, {800, 600}},   // the bar makes it too wide
                                           {{900, 300}, {800, 307}}};  // one bar under it
  for (const auto& [contents, size] : sizes)
    EXPECT_EQ(ScrolledSize(contents, {800, 600}, {10, 7}), size) << contents.cx;
}

TEST_F(ScreenFit, ADialogLargerThanTheScreenScrollsToEachOfItsControls) {
  for (const CDialogTemplate* model : {&kFixed, &kResizable}) {
    CLarge dialog(*model);
    ASSERT_TRUE(dialog.Create());
    QWidget* window = dialog.Widget();
    auto* edit = Find<QLineEdit>(window, "Second");  // the first one would get the focus anyway
    edit->setFocus();
    const QRect button = Find<QAbstractButton>(window, "Last")->geometry();
    dialog.ShowWindow(SW_SHOW);
    QTest::qWait(400);
    EXPECT_TRUE(Free().contains(window->frameGeometry()));
    EXPECT_TRUE(edit->hasFocus()) << "the focus is lost";
    EXPECT_TRUE(dialog.painted);
    EXPECT_EQ(Find<QAbstractButton>(window, "Last")->geometry(), button) << "the layout has changed";
    EXPECT_TRUE(IsSeen(edit));
    EXPECT_FALSE(IsSeen(Find<QAbstractButton>(window, "Last")));
    QTest::keyClick(edit, Qt::Key_Tab);
    EXPECT_TRUE(IsSeen(Find<QAbstractButton>(window, "Last"))) << "the focus is not in sight";
    QTest::mouseClick(dialog.Client(), Qt::LeftButton, {}, QPoint(700, 1000));
    EXPECT_EQ(dialog.clicked, (CPoint{700, 1000}));
    dialog.DestroyWindow();
  }
}

TEST_F(ScreenFit, AWindowWithALayoutScrollsOnlyIfItMust) {
  for (const int rows : {3, 100}) {
    QWidget window;
    auto* layout = new QVBoxLayout(&window);
    for (int i = 0; i < rows; ++i) layout->addWidget(new QLineEdit(&window));
    window.setGeometry(5000, 20, 2560, 1400);
    window.show();
    QTest::qWait(400);
    EXPECT_TRUE(Free().contains(window.frameGeometry())) << rows;
    EXPECT_EQ(window.findChild<QScrollArea*>() != nullptr, rows == 100);
  }
}

TEST_F(ScreenFit, TheTextOfALongBoxScrolls) {
  CString text;
  for (int i = 0; i < 200; ++i) text += "outputs[1].equationText: a line of a long message\n";
  QRect box, button;
  WhileModal([&] { AfxMessageBox(text); },
             [&](QWidget* window) {
               QTest::qWait(300);
               box = window->frameGeometry();
               EXPECT_TRUE(IsSeen(window->findChild<QAbstractButton*>()));
             });
  EXPECT_TRUE(Free().contains(box)) << box.height();
}

}  // namespace
}  // namespace vastra
