#include "vastra/ui/property_sheet.h"

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

// Notes its calls in a string that the pages of a sheet share.
class CTestPage : public CPropertyPage {
 public:
  CTestPage(const CDialogTemplate& model, std::string& log) : CPropertyPage(model), m_log(log) {}
  void OnInitDialog() override { Note("init"); }
  int OnKillActive() override { return Note("leave"), allowsLeaving; }
  int OnApply() override { return Note("apply"), allowsApply; }

  int allowsLeaving = 1, allowsApply = 1;

 private:
  void Note(const char* what) { m_log += std::string(Model().title) + " " + what + "|"; }
  std::string& m_log;
};

class PropertySheet : public testing::Test, public CPropertySheet {
 protected:
  PropertySheet() : CPropertySheet("Sheet") {
    AddPage(m_first);
    AddPage(m_second);
  }
  void OnApplied() override { m_log += "applied"; }
  std::string Take() { return std::exchange(m_log, {}); }

  std::string m_log;
  CTestPage m_first{kFirstTemplate, m_log}, m_second{kSecondTemplate, m_log};
};

TEST_F(PropertySheet, AsksTheActivePageThenAllPages) {
  const auto user = [&](QWidget* window) {
    auto* tabs = window->findChild<QTabWidget*>();
    EXPECT_EQ(Take(), "One & only init|Two init|");
    EXPECT_EQ(tabs->tabText(0), "One && only");
    QTest::keyClick(tabs, Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(tabs->currentIndex(), 1);
    EXPECT_EQ(Take(), "One & only leave|");
    Click(window, "Apply");
    EXPECT_EQ(Take(), "Two leave|One & only apply|Two apply|applied");
    EXPECT_TRUE(window->isVisible());

    m_second.allowsLeaving = 0;
    tabs->setCurrentIndex(0);
    EXPECT_EQ(tabs->currentIndex(), 1) << "a page that refuses is left";
    Click(window, "OK");
    EXPECT_EQ(Take(), "Two leave|Two leave|");

    m_second.allowsLeaving = 1;
    m_first.allowsApply = 0;
    Click(window, "OK");
    EXPECT_EQ(Take(), "Two leave|One & only apply|");
    EXPECT_EQ(tabs->currentIndex(), 0) << "the page that refuses is not shown";

    m_first.allowsApply = 1;
    SetActivePage(1);
    QTest::keyClick(Find<QLineEdit>(window, "Second"), Qt::Key_Return);  // presses OK
  };
  WhileModal([&] { EXPECT_EQ(DoModal(), IDOK); }, user);
  EXPECT_EQ(Take(), "One & only leave|Two leave|One & only apply|Two apply|applied");
  EXPECT_EQ(m_first.Widget(), nullptr);

  // A second run creates the pages again. Escape on a page ends it without a question to the pages.
  const auto again = [&](QWidget* window) {
    EXPECT_EQ(GetActiveIndex(), 0) << "the page of the run before";
    QTest::keyClick(Find<QLineEdit>(window, "First"), Qt::Key_Escape);
  };
  WhileModal([&] { EXPECT_EQ(DoModal(), IDCANCEL); }, again);
  EXPECT_EQ(Take(), "One & only init|Two init|");
}

TEST_F(PropertySheet, FitsItsLargestPageAndTheTabKeyVisitsThePageThenTheButtons) {
  const auto user = [&](QWidget* window) {
    SetActivePage(1);
    QWidget* const press = Find<QAbstractButton>(window, "Press");
    QWidget* const apply = Find<QAbstractButton>(window, "Apply");
    EXPECT_TRUE(press->parentWidget()->rect().contains(press->geometry()));
    EXPECT_EQ(press->visibleRegion().boundingRect(), press->rect()) << "cut off";
    EXPECT_TRUE(window->rect().contains(apply->mapTo(window, apply->rect().bottomRight())));
    QWidget* const order[] = {Find<QLineEdit>(window, "Second"), press, Find<QAbstractButton>(window, "OK"),
                              Find<QAbstractButton>(window, "Cancel"), apply};
    order[0]->setFocus();
    for (QWidget* each : order) {
      EXPECT_EQ(window->focusWidget(), each);
      QTest::keyClick(each, Qt::Key_Tab);
    }
    EXPECT_EQ(window->focusWidget()->parentWidget(), window->findChild<QTabWidget*>());
  };
  WhileModal([&] { DoModal(); }, user);
}

}  // namespace
}  // namespace vastra
