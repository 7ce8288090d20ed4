#include "host/desktop/help_window.h"

#include <QAbstractTextDocumentLayout>
#include <QApplication>
#include <QComboBox>
#include <QDesktopServices>
#include <QFile>
#include <QHBoxLayout>
#include <QImage>
#include <QKeyEvent>
#include <QLineEdit>
#include <QPushButton>
#include <QScrollBar>
#include <QShortcut>
#include <QTabWidget>
#include <QTextBlock>
#include <QVBoxLayout>

#include <algorithm>

#include "host/desktop/help_rules.h"
#include "vastra/ui/focus_ring.h"
#include "vastra/ui/search_field.h"

namespace vastra {
namespace {

constexpr const char *kHelpFolder = ":/help/", *kFirstPage = "desktop-guide.md";
constexpr int kPageMargin = 40;  // beside a picture, pixels

bool IsHeading(const QTextBlock& block) { return block.blockFormat().headingLevel() > 0; }

QTextBlock FindHeading(const QTextDocument& page, const QString& anchor) {
  for (QTextBlock block = page.begin(); block.isValid(); block = block.next())
    if (IsHeading(block) && AnchorOf(block.text().toStdString()) == anchor.toStdString()) return block;
  return page.begin();
}

// The title that the table of the rules has: that of a page, if the window has tabs.
QString HelpTitle(const QWidget& window) {
  const auto* tabs = window.findChild<QTabWidget*>();
  return tabs ? tabs->tabText(tabs->currentIndex()) : window.windowTitle().remove("[*]");
}

// The place of a window, or that of the window over which it is.
CHelpPlace PlaceOfWindow(const QWidget* window) {
  for (; window; window = window->parentWidget() ? window->parentWidget()->window() : nullptr)
    if (const CHelpPlace* place = HelpPlaceOf(HelpTitle(*window).toStdString())) return *place;
  return {"", kFirstPage, ""};
}

}  // namespace

QVariant CHelpBrowser::loadResource(int type, const QUrl& name) {
  if (type != QTextDocument::ImageResource) return QTextBrowser::loadResource(type, name);
  const QImage image(kHelpFolder + name.path());
  const int room = std::max(viewport()->width() - kPageMargin, kPageMargin);
  return image.width() > room ? image.scaledToWidth(room, Qt::SmoothTransformation) : image;
}

CHelpWindow::CHelpWindow(QWidget* parent)
    : QWidget(parent, Qt::Window),
      m_browser(new CHelpBrowser(this)),
      m_back(new QPushButton("&Back", this)),
      m_sections(new QComboBox(this)),
      m_words(NewSearchField("Find", this)) {
  setWindowTitle("Guide");
  m_browser->setAccessibleName("Guide");
  RingOnFocus(*m_browser);
  m_browser->setOpenLinks(false);
  connect(m_browser, &QTextBrowser::anchorClicked, this, [this](const QUrl& link) { Follow(link); });
  auto* all = new QVBoxLayout(this);
  MakeBar();
  all->addWidget(m_browser);
  resize(fontMetrics().averageCharWidth() * 120, fontMetrics().height() * 44);
  m_browser->setFocus();
}

void CHelpWindow::MakeBar() {
  m_back->setToolTip("To the place before the last link (Alt+Left)");
  m_back->setEnabled(false);
  m_sections->setAccessibleName("Section");
  m_sections->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  m_words->setAccessibleName("Find");
  m_words->setToolTip("Enter: the next place, Shift+Enter: the one before (Ctrl+F, F3)");
  connect(m_back, &QPushButton::clicked, this, [this] { GoBack(); });
  connect(m_sections, &QComboBox::activated, this, [this](int section) {
    GoTo(m_browser->document()->findBlockByNumber(m_sections->itemData(section).toInt()));
    m_browser->setFocus();
  });
  connect(m_words, &QLineEdit::returnPressed, this, [this] {
    const bool isBack = QApplication::keyboardModifiers() & Qt::ShiftModifier;
    Find(isBack ? QTextDocument::FindBackward : QTextDocument::FindFlags());
  });
  const std::pair<QKeySequence, std::function<void()>> keys[] = {
      {QKeySequence(Qt::ALT | Qt::Key_Left), [this] { GoBack(); }},
      {QKeySequence::Find, [this] { m_words->setFocus(), m_words->selectAll(); }},
      {QKeySequence(Qt::Key_F3), [this] { Find(); }},
      {QKeySequence(Qt::Key_Escape), [this] { close(); }}};
  for (const auto& [key, action] : keys)
    connect(new QShortcut(key, this), &QShortcut::activated, this, action);
  auto* bar = new QHBoxLayout;
  bar->addWidget(m_back);
  bar->addWidget(m_sections, 2);
  bar->addWidget(m_words, 1);
  static_cast<QVBoxLayout*>(layout())->addLayout(bar);
}

void CHelpWindow::Open(const QString& page, const QString& anchor) {
  if (!m_page.isEmpty())
    m_visits.push_back({m_page, m_browser->verticalScrollBar()->value(), m_browser->textCursor().position()});
  m_back->setEnabled(!m_visits.empty());
  Show(page);
  GoTo(FindHeading(*m_browser->document(), anchor));
}

void CHelpWindow::Show(const QString& page) {
  if (page == m_page) return;
  QFile file(kHelpFolder + page);
  if (!file.open(QIODevice::ReadOnly)) return;
  m_page = page;
  m_browser->document()->setMarkdown(file.readAll(), QTextDocument::MarkdownDialectGitHub);
  FillSections();
}

void CHelpWindow::FillSections() {
  m_sections->clear();
  const QTextDocument& page = *m_browser->document();
  for (QTextBlock block = page.begin(); block.isValid(); block = block.next()) {
    if (!IsHeading(block)) continue;
    const QString indent(qsizetype{2} * (block.blockFormat().headingLevel() - 1), QChar(32));
    m_sections->addItem(indent + block.text(), block.blockNumber());
  }
}

// Links lead to a heading, to another page, or out of the guide.
void CHelpWindow::Follow(const QUrl& link) {
  if (!link.isRelative()) {
    QDesktopServices::openUrl(link);
    return;
  }
  const QString page = link.path().isEmpty() ? m_page : link.path();
  if (QFile::exists(kHelpFolder + page)) Open(page, link.fragment());
}

void CHelpWindow::GoBack() {
  if (m_visits.empty()) return;
  const CVisit visit = m_visits.back();
  m_visits.pop_back();
  m_back->setEnabled(!m_visits.empty());
  Show(visit.page);
  QTextCursor cursor(m_browser->document());
  cursor.setPosition(visit.place);
  m_browser->setTextCursor(cursor);
  m_browser->verticalScrollBar()->setValue(visit.scrolled);
}

void CHelpWindow::GoTo(const QTextBlock& heading) {
  m_browser->setTextCursor(QTextCursor(heading));
  const QRectF place = m_browser->document()->documentLayout()->blockBoundingRect(heading);
  m_browser->verticalScrollBar()->setValue(static_cast<int>(place.top()));
  m_sections->setCurrentIndex(std::max(0, m_sections->findData(heading.blockNumber())));
}

QString CHelpWindow::Heading() const {
  QTextBlock block = m_browser->textCursor().block();
  while (block.isValid() && !IsHeading(block)) block = block.previous();
  return block.text();
}

// After the end of the page the search begins at its begin.
void CHelpWindow::Find(QTextDocument::FindFlags flags) {
  if (m_words->text().isEmpty() || m_browser->find(m_words->text(), flags)) return;
  const QTextCursor former = m_browser->textCursor();
  m_browser->moveCursor(flags & QTextDocument::FindBackward ? QTextCursor::End : QTextCursor::Start);
  if (m_browser->find(m_words->text(), flags)) return;
  m_browser->setTextCursor(former);
  QApplication::beep();
}

CHelp::CHelp(QObject* parent) : QObject(parent) { qApp->installEventFilter(this); }

bool CHelp::eventFilter(QObject* object, QEvent* event) {
  if (event->type() != QEvent::KeyPress || !object->isWidgetType()) return false;
  const auto& key = static_cast<const QKeyEvent&>(*event);
  if (key.key() != Qt::Key_F1 || key.modifiers() != Qt::NoModifier) return false;
  Show(static_cast<const QWidget*>(object)->window());
  return true;
}

// A modal dialog blocks all windows but its own: its help belongs to it. One that is over the help, as a box
// that came while the help was active, has none.
void CHelp::Show(const QWidget* window) {
  QWidget* dialog = QApplication::activeModalWidget();
  for (const QWidget* owner = dialog; owner && m_window; owner = owner->parentWidget())
    if (owner == m_window) return;
  if (m_window && m_window->parentWidget() != dialog) delete m_window.data();
  if (!m_window) m_window = new CHelpWindow(dialog);
  m_window->show();
  if (window != m_window) {
    const CHelpPlace place = PlaceOfWindow(window);
    m_window->Open(place.page, QString::fromStdString(AnchorOf(place.heading)));
  }
  m_window->raise();
  m_window->activateWindow();
}

}  // namespace vastra
