// The guide in the program.
#include <QFile>
#include <QLineEdit>
#include <QRegularExpression>
#include <QScrollBar>
#include <QTabWidget>

#include <set>

#include "host/desktop/help_rules.h"
#include "host/desktop/help_window.h"
#include "tests/host/desktop_window.h"

namespace vastra {
namespace {

// The text of a page; empty if the program has none of that name.
QString PageText(const QString& page) {
  QFile file(":/help/" + page);
  return file.open(QIODevice::ReadOnly) ? QString(file.readAll()) : QString();
}

std::set<std::string> Anchors(const QString& page) {
  std::set<std::string> anchors = {""};
  static const QRegularExpression heading("^#+ (.*)$", QRegularExpression::MultilineOption);
  for (const auto& found : heading.globalMatch(PageText(page)))
    anchors.insert(AnchorOf(found.captured(1).remove('`').toStdString()));
  return anchors;
}

TEST(Help, ATitleCanHaveAnyNameInIt) {
  const char* const cases[][2] = {{"/a/b.json - Vastra", "The state of the plant"},
                                  {"Vastra", "The state of the plant"},
                                  {"History of All", "Charts"},
                                  {"Values", "All values"},
                                  {"Values of kiln", "All values"},
                                  {"kiln (attached)", "A logger that runs elsewhere"}};
  for (const auto& [title, heading] : cases) {
    const CHelpPlace* place = HelpPlaceOf(title);
    EXPECT_STREQ(place ? place->heading : "", heading) << title;
  }
  EXPECT_FALSE(HelpPlaceOf("Insert Variable"));
}

TEST(Help, EachPlaceOfTheTableAndEachLinkOfTheGuideExists) {
  for (const CHelpPlace& place : HelpPlaces())
    EXPECT_TRUE(Anchors(place.page).contains(AnchorOf(place.heading))) << place.heading;
  static const QRegularExpression link(R"(\]\(([\w/.-]*)(?:#([\w-]+))?\))");
  int links = 0;
  for (const auto& found : link.globalMatch(PageText("desktop-guide.md"))) {
    const QString page = found.captured(1).isEmpty() ? "desktop-guide.md" : found.captured(1);
    ++links;
    if (page.endsWith(".png"))
      EXPECT_TRUE(QFile::exists(":/help/" + page)) << page.toStdString();
    else
      EXPECT_TRUE(Anchors(page).contains(found.captured(2).toStdString())) << found.captured().toStdString();
  }
  EXPECT_GT(links, 30);
}

class HelpWindow : public Desktop {
 protected:
  static CHelpWindow* Guide() { return dynamic_cast<CHelpWindow*>(TopLevel("Guide")); }
  static std::string HeadingAfterF1(QWidget* window) {
    window->activateWindow();
    EXPECT_TRUE(Wait([&] { return QApplication::activeWindow() == window; }));
    QTest::keyClick(window->focusWidget() ? window->focusWidget() : window, Qt::Key_F1);
    EXPECT_TRUE(Guide());
    return Guide() ? Guide()->Heading().toStdString() : "";
  }
};

TEST_F(HelpWindow, F1OpensTheGuideAtTheWindowAlsoFromADialog) {
  CTestWindow window(m_demo);
  const char* const cases[][3] = {{"Trend", "Trending", "Curves"},
                                  {"Scan Grid", "Scan Screen", "Numbers"},
                                  {"Values", "Values", "All values"},
                                  {"Message Log", "Message Log", "The message log"}};
  for (const auto& [action, title, heading] : cases) {
    ActionOf(window, action)->trigger();
    EXPECT_EQ(HeadingAfterF1(TopLevel(title)), heading);
  }
  EXPECT_EQ(HeadingAfterF1(&window), "The state of the plant");
  WhileModal([&] { ActionOf(window, "Configuration...")->trigger(); },
             [&](QWidget* sheet) {
               sheet->findChild<QTabWidget*>()->setCurrentIndex(1);
               EXPECT_EQ(HeadingAfterF1(sheet), "Output: the logs");
               EXPECT_EQ(Guide()->parentWidget(), sheet) << "the dialog blocks the guide";
             });
  QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
  EXPECT_FALSE(Guide());
  ActionOf(window, "Guide")->trigger();
  EXPECT_EQ(Guide()->Heading(), "The desktop");
}

TEST_F(HelpWindow, LinksAreFollowedAndLeftAndWordsAreFound) {
  CHelpWindow guide(nullptr);
  guide.show();
  guide.Open("desktop-guide.md", "curves");
  auto* browser = Find<CHelpBrowser>(&guide, "Guide");
  const int scrolled = browser->verticalScrollBar()->value();
  EXPECT_GT(scrolled, 100);
  for (const char* picture : {"images/main.png", "images/built.png"}) {
    const QVariant shown = browser->document()->resource(QTextDocument::ImageResource, QUrl(picture));
    EXPECT_GT(shown.value<QImage>().width(), 300) << picture;
    EXPECT_LT(shown.value<QImage>().width(), browser->viewport()->width()) << "a picture is cut off";
  }
  emit browser->anchorClicked(QUrl("stages.md#extra-variables"));
  EXPECT_EQ(guide.Heading(), "Extra variables");
  emit browser->anchorClicked(QUrl("no-such-page.md"));
  EXPECT_EQ(guide.Heading(), "Extra variables");
  Click(&guide, "&Back");
  EXPECT_EQ(guide.Heading(), "Curves");
  EXPECT_EQ(browser->verticalScrollBar()->value(), scrolled);

  auto* words = Find<QLineEdit>(&guide, "Find");
  QTest::keyClicks(words, "sigterm");
  QTest::keyClick(words, Qt::Key_Return);
  const int first = browser->textCursor().position();
  EXPECT_EQ(browser->textCursor().selectedText(), "SIGTERM");
  QTest::keyClick(words, Qt::Key_Return);
  EXPECT_EQ(browser->textCursor().position(), first) << "it is there once: the search goes on at the begin";
}

}  // namespace
}  // namespace vastra
