#include "host/desktop/equation_edit.h"

#include <QAbstractItemView>
#include <QCompleter>
#include <QFontDatabase>
#include <QKeyEvent>
#include <QScrollBar>
#include <QStringListModel>
#include <QSyntaxHighlighter>

#include <set>

#include "host/common/name_set.h"
#include "host/desktop/equation_help_rules.h"
#include "vastra/equations/separator.h"
#include "vastra/ui/focus_ring.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr int kFirstOffer = 2;  // letters, before words are offered without a key

// A colour that can be read on the ground of palette.
QColor TintOn(const QPalette& palette, int hue) {
  const bool isDark = palette.color(QPalette::Base).lightness() < 128;
  return QColor::fromHsl(hue, 170, isDark ? 175 : 85);
}

bool IsWordOfName(QChar c) { return c == '_' || (c.unicode() < 0x80 && c.isLetterOrNumber()); }

}  // namespace

class CEquationColours : public QSyntaxHighlighter {
 public:
  explicit CEquationColours(QPlainTextEdit& edit) : QSyntaxHighlighter(edit.document()), m_edit(edit) {}

  void SetKnown(const CStringArray& names) {
    m_known = {names.begin(), names.end()};
    rehighlight();
  }

 protected:
  void highlightBlock(const QString& text) override {
    const std::u16string line = text.toStdU16String();
    bool isInComment = previousBlockState() == 1;
    for (const CEquationToken& token : EquationTokens(std::u16string_view(line), isInComment)) {
      const auto begin = static_cast<int>(token.begin), length = static_cast<int>(token.length);
      setFormat(begin, length, FormatOf(token.kind, text.mid(begin, length)));
    }
    setCurrentBlockState(isInComment ? 1 : 0);
  }

 private:
  QTextCharFormat FormatOf(EEquationToken kind, const QString& word) const {
    const QPalette& palette = m_edit.palette();
    QTextCharFormat format;
    if (kind == EEquationToken::function) format.setForeground(TintOn(palette, 280));
    if (kind == EEquationToken::function) format.setFontWeight(QFont::Bold);
    if (kind == EEquationToken::number) format.setForeground(TintOn(palette, 30));
    if (kind == EEquationToken::comment) format.setForeground(palette.placeholderText());
    if (kind == EEquationToken::comment) format.setFontItalic(true);
    if (kind == EEquationToken::name && m_known.contains(FromScreen(word)))
      format.setForeground(TintOn(palette, 210));
    return format;
  }

  const QPlainTextEdit& m_edit;
  std::set<CString> m_known;
};

CEquationEdit::CEquationEdit(QWidget* parent)
    : QPlainTextEdit(parent),
      m_colours(new CEquationColours(*this)),
      m_completer(new QCompleter(this)),
      m_words(new QStringListModel(this)) {
  setFont(QFontDatabase::systemFont(QFontDatabase::FixedFont));
  setTabChangesFocus(true);
  RingOnFocus(*this);
  m_completer->setWidget(this);
  m_completer->setModel(m_words);
  m_completer->setCompletionMode(QCompleter::UnfilteredPopupCompletion);
  connect(m_completer, qOverload<const QString&>(&QCompleter::activated), this,
          [this](const QString& word) { Complete(word); });
}

void CEquationEdit::SetNames(const CStringArray& names, const CStringArray& results) {
  m_names = names;
  m_names.Append(results);
  m_colours->SetKnown(names);
}

void CEquationEdit::MarkFault(int place, int length) {
  QList<QTextEdit::ExtraSelection> marks;
  if (place >= 0) {
    QTextEdit::ExtraSelection mark;
    mark.cursor = QTextCursor(document());
    mark.cursor.setPosition(std::min(place, document()->characterCount() - 1));
    mark.cursor.movePosition(QTextCursor::Right, QTextCursor::KeepAnchor, std::max(length, 1));
    mark.format.setUnderlineStyle(QTextCharFormat::WaveUnderline);
    mark.format.setUnderlineColor(TintOn(palette(), 0));
    mark.format.setBackground(QColor(255, 0, 0, 50));
    marks << mark;
  }
  setExtraSelections(marks);
}

void CEquationEdit::GoTo(int place) {
  QTextCursor cursor(document());
  cursor.setPosition(std::clamp(place, 0, document()->characterCount() - 1));
  setTextCursor(cursor);
  ensureCursorVisible();
}

void CEquationEdit::keyPressEvent(QKeyEvent* event) {
  const QList<int> forList = {Qt::Key_Return, Qt::Key_Enter, Qt::Key_Tab, Qt::Key_Backtab, Qt::Key_Escape};
  if (m_completer->popup()->isVisible() && forList.contains(event->key())) return event->ignore();
  const bool isAsked = event->key() == Qt::Key_Space && event->modifiers() == Qt::ControlModifier;
  if (!isAsked) QPlainTextEdit::keyPressEvent(event);
  const bool isTyped = !event->text().isEmpty() && IsWordOfName(event->text().at(0));
  if (isAsked || isTyped || m_completer->popup()->isVisible()) OfferWords(isAsked);
}

// Tab chooses an offered word before it moves the focus.
bool CEquationEdit::focusNextPrevChild(bool next) {
  return !m_completer->popup()->isVisible() && QPlainTextEdit::focusNextPrevChild(next);
}

void CEquationEdit::changeEvent(QEvent* event) {
  QPlainTextEdit::changeEvent(event);
  if (event->type() == QEvent::PaletteChange) m_colours->rehighlight();
}

// Empty: the cursor is not after a letter of a name.
QString CEquationEdit::WordBeforeCursor() const {
  const QTextCursor cursor = textCursor();
  const QString line = cursor.block().text().left(cursor.positionInBlock());
  qsizetype begin = line.size();
  while (begin > 0 && IsWordOfName(line[begin - 1])) --begin;
  return begin < line.size() && line[begin].isLetter() ? line.mid(begin) : QString();
}

void CEquationEdit::OfferWords(bool isAsked) {
  const QString begin = WordBeforeCursor();
  CStringArray names = m_names, statements, assigned;
  CArray<int, int> positions;
  CEquationSeparator().Separate(FromScreenLines(toPlainText()), statements, assigned, positions);
  names.Append(assigned);
  QStringList words;
  for (const CString& word : CompletionsOf(FromScreen(begin), names)) words << ToScreen(word);
  if (!isAsked) words.removeAll(begin);  // the typed word is among the assigned ones
  if (words.isEmpty() || (begin.size() < kFirstOffer && !isAsked)) return m_completer->popup()->hide();
  m_words->setStringList(words);
  QAbstractItemView* list = m_completer->popup();
  list->setCurrentIndex(m_words->index(0, 0));
  QRect place = cursorRect();
  place.setWidth(list->sizeHintForColumn(0) + list->verticalScrollBar()->sizeHint().width());
  m_completer->complete(place);
}

void CEquationEdit::Complete(const QString& word) {
  QTextCursor cursor = textCursor();
  cursor.movePosition(QTextCursor::Left, QTextCursor::KeepAnchor,
                      static_cast<int>(WordBeforeCursor().size()));
  cursor.insertText(word);
  setTextCursor(cursor);
}

}  // namespace vastra
