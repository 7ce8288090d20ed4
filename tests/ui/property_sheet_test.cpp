#include "vastra/ui/property_sheet.h"

#include <gtest/gtest.h>

#include <QLineEdit>
#include <QTabWidget>

#include "tests/support/windows.h"

namespace vastra {
namespace {

constexpr CControl kFirst[] = {{CControl::edit, "First", {7, 7, 100, 14}}};
constexpr CControl kSecond[] = {{CControl::edit, "Second", {7, 7, 150, 14}},
                                {CControl::button, "Press", {7, 80, 50, 14}}};
constexpr CDialogTemplate kFirstTemplate = {"One & only", {120, 30}, kFirst};
constexpr CDialogTemplate kSecondTemplate = {"Two", {160, 100}, kSecond};

// Records its calls in a log that the pages of a sheet share.
class CTestPage : public CPropertyPage {
 public:
  CTestPage(const CDialogTemplate& model, std::vector<std::string>& log) : CPropertyPage(model), m_log(log) {}
  void OnInitDialog() override { Note("init"); }
  int OnKillActive() override { return Note("leave"), allowsLeaving; }
  int OnApply() override { return Note("apply"), allowsApply; }

  int allowsLeaving = 1, allowsApply = 1;

 private:
  void Note(const char* what) { m_log.push_back(std::string(Model().title) + " " + what); }
  std::vector<std::string>& m_log;
};

class CTestSheet : public CPropertySheet {
 public:
  CTestSheet() : CPropertySheet("Sheet") {
    AddPage(first);
    AddPage(second);
  }
  void OnApplied() override { log.push_back("applied"); }
  std::vector<std::string> Take() { return std::exchange(log, {}); }

  std::vector<std::string> log;
  CTestPage first{kFirstTemplate, log}, second{kSecondTemplate, log};
};

using Log = std::vector<std::string>;

TEST(PropertySheet, AsksTheActivePageThenAllPages) {
  CTestSheet sheet;
  const auto user = [&](QWidget* window) {
    auto* tabs = window->findChild<QTabWidget*>();
    EXPECT_EQ(sheet.Take(), (Log{"One & only init", "Two init"}));
    EXPECT_EQ(tabs->tabText(0), "One && only");
    QTest::keyClick(tabs, Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(tabs->currentIndex(), 1);
    EXPECT_EQ(sheet.Take(), Log{"One & only leave"});
    Click(window, "Apply");
    EXPECT_EQ(sheet.Take(), (Log{"Two leave", "One & only apply", "Two apply", "applied"}));
    EXPECT_TRUE(window->isVisible());

    sheet.second.allowsLeaving = 0;
    tabs->setCurrentIndex(0);
    EXPECT_EQ(tabs->currentIndex(), 1) << "a page that refuses is left";
    Click(window, "OK");
    EXPECT_EQ(sheet.Take(), (Log{"Two leave", "Two leave"}));

    sheet.second.allowsLeaving = 1;
    sheet.first.allowsApply = 0;
    Click(window, "OK");
    EXPECT_EQ(sheet.Take(), (Log{"Two leave", "One & only apply"}));
    EXPECT_EQ(tabs->currentIndex(), 0) << "the page that refuses is not shown";
    EXPECT_EQ(sheet.GetActiveIndex(), 0);

    sheet.first.allowsApply = 1;
    QTest::keyClick(Find<QLineEdit>(window, "First"), Qt::Key_Return);  // presses OK
  };
  WhileModal([&] { EXPECT_EQ(sheet.DoModal(), IDOK); }, user);
  EXPECT_EQ(sheet.Take(), (Log{"One & only leave", "One & only apply", "Two apply", "applied"}));
  EXPECT_EQ(sheet.first.Widget(), nullptr);

  // A second run creates the pages again. Escape on a page ends it without a question to the pages.
  WhileModal([&] { EXPECT_EQ(sheet.DoModal(), IDCANCEL); },
             [&](QWidget* window) { QTest::keyClick(Find<QLineEdit>(window, "First"), Qt::Key_Escape); });
  EXPECT_EQ(sheet.Take(), (Log{"One & only init", "Two init"}));
}

TEST(PropertySheet, TheTabKeyVisitsThePageThenTheButtons) {
  CTestSheet sheet;
  const auto user = [&](QWidget* window) {
    EXPECT_TRUE(QTest::qWaitForWindowActive(window));
    sheet.SetActivePage(1);
    const QList<QWidget*> order = {Find<QLineEdit>(window, "Second"), Find<QAbstractButton>(window, "Press"),
                                   Find<QAbstractButton>(window, "OK"),
                                   Find<QAbstractButton>(window, "Cancel"),
                                   Find<QAbstractButton>(window, "Apply")};
    order[0]->setFocus();
    for (QWidget* each : order) {
      EXPECT_EQ(window->focusWidget(), each);
      QTest::keyClick(each, Qt::Key_Tab);
    }
    EXPECT_EQ(window->focusWidget()->parentWidget(), window->findChild<QTabWidget*>());
  };
  WhileModal([&] { sheet.DoModal(); }, user);
  const auto again = [&](QWidget*) { EXPECT_EQ(sheet.GetActiveIndex(), 0) << "the page of the run before"; };
  WhileModal([&] { sheet.DoModal(); }, again);
}

TEST(PropertySheet, FitsItsLargestPage) {
  CTestSheet sheet;
  WhileModal([&] { sheet.DoModal(); },
             [&](QWidget* window) {
               sheet.SetActivePage(1);
               const QWidget* button = Find<QAbstractButton>(window, "Press");
               const QRect page = button->parentWidget()->rect();
               EXPECT_TRUE(page.contains(button->geometry()));
               EXPECT_EQ(button->visibleRegion().boundingRect(), button->rect()) << "cut off";
               const auto bottomOf = [&](QWidget* widget) {
                 return widget->mapTo(window, widget->rect().bottomRight());
               };
               EXPECT_TRUE(window->rect().contains(bottomOf(Find<QAbstractButton>(window, "Apply"))));
             });
}

}  // namespace
}  // namespace vastra
