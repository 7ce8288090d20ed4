#include "vastra/ui/controls.h"

#include <QAbstractButton>
#include <QButtonGroup>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QTextDocument>

#include <algorithm>

#include "vastra/ui/text.h"

namespace vastra {
namespace {

// Shows each "&" of a caption; none marks a key.
QString ToCaption(const CString& text) { return ToScreen(text).replace('&', "&&"); }

CString FromCaption(const QString& caption) { return FromScreen(QString(caption).replace("&&", "&")); }

// An entry stores the bytes of its string beside the shown text.
constexpr int kBytes = Qt::UserRole;

QByteArray ToBytes(const CString& text) { return {text.View().data(), text.GetLength()}; }

CString FromBytes(const QVariant& data) {
  const QByteArray bytes = data.toByteArray();
  return CString(bytes.data(), static_cast<std::size_t>(bytes.size()));
}

void Show(QListWidgetItem& item, const CString& text) {
  item.setText(ToScreen(text));
  item.setData(kBytes, ToBytes(text));
}

// Of a list or a combo box.
template <class T>
int FindText(const T& list, const CString& text) {
  for (int i = 0; i < list.GetCount(); ++i)
    if (list.GetText(i) == text) return i;
  return -1;
}

QListWidget& ListOf(const CWnd& window) { return *static_cast<QListWidget*>(window.Widget()); }

// A list in which the first arrow key selects the current entry if none is selected. The toolkit's list would
// select the next one, so that a single entry could not be selected.
class CKeyList : public QListWidget {
 public:
  using QListWidget::QListWidget;

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    const bool isArrow = event->key() == Qt::Key_Up || event->key() == Qt::Key_Down;
    if (isArrow && event->modifiers() == Qt::NoModifier && currentItem() && selectedItems().isEmpty())
      setCurrentRow(currentRow());
    else
      QListWidget::keyPressEvent(event);
  }
};

// A list that moves its selected entry with Ctrl and an arrow key.
class CDragList : public CKeyList {
 public:
  using CKeyList::CKeyList;

 protected:
  void keyPressEvent(QKeyEvent* event) override {
    const int step = event->key() == Qt::Key_Up ? -1 : event->key() == Qt::Key_Down ? 1 : 0;
    if (step != 0 && event->modifiers() & Qt::ControlModifier)
      MoveMarked(step);
    else
      CKeyList::keyPressEvent(event);
  }

 private:
  void MoveMarked(int step) {
    const int from = currentRow();
    const int to = from + step;
    if (from < 0 || to < 0 || to >= count()) return;
    insertItem(to, takeItem(from));
    setCurrentRow(to);
  }
};

// The text of a text edit, with its blanks unchanged.
QString TextOf(const QPlainTextEdit& edit) {
  return edit.document()->toRawText().replace(QChar::ParagraphSeparator, '\n');
}

}  // namespace

CButton::CButton(QAbstractButton* widget) { Attach(widget); }

void CButton::SetWindowText(const CString& text) {
  static_cast<QAbstractButton*>(Widget())->setText(ToCaption(text));
}

CString CButton::GetWindowText() const {
  return FromCaption(static_cast<QAbstractButton*>(Widget())->text());
}

// Makes the checked button of a group its tab stop. The toolkit does so only after one of the buttons has had
// the focus.
void CButton::SetCheck(int check) {
  auto* button = static_cast<QAbstractButton*>(Widget());
  button->setChecked(check != 0);
  if (!button->group() || !check) return;
  for (QAbstractButton* each : button->group()->buttons())
    each->setFocusPolicy(each == button ? Qt::StrongFocus : Qt::ClickFocus);
}

int CButton::GetCheck() const { return static_cast<QAbstractButton*>(Widget())->isChecked(); }

CStatic::CStatic(QLabel* widget) { Attach(widget); }

void CStatic::SetWindowText(const CString& text) { static_cast<QLabel*>(Widget())->setText(ToScreen(text)); }

CString CStatic::GetWindowText() const { return FromScreen(static_cast<QLabel*>(Widget())->text()); }

CEdit::CEdit(QWidget* widget) { Attach(widget); }

void CEdit::SetWindowText(const CString& text) {
  m_text = text;
  if (auto* lines = qobject_cast<QPlainTextEdit*>(Widget()))
    lines->setPlainText(ToScreenLines(text));
  else if (auto* line = qobject_cast<QLineEdit*>(Widget()))
    line->setText(ToScreen(text));
}

CString CEdit::GetWindowText() const {
  if (auto* lines = qobject_cast<QPlainTextEdit*>(Widget())) {
    const QString now = TextOf(*lines);
    return now == ToScreenLines(m_text) ? m_text : FromScreenLines(now);
  }
  auto* line = qobject_cast<QLineEdit*>(Widget());
  if (!line) return m_text;
  return line->text() == ToScreen(m_text) ? m_text : FromScreen(line->text());
}

void CEdit::SelectAt(int offset, int count) {
  auto* edit = qobject_cast<QPlainTextEdit*>(Widget());
  if (!edit) return;
  QTextCursor cursor = edit->textCursor();
  const int length = edit->document()->characterCount() - 1;
  cursor.setPosition(std::min(ScreenPlace(GetWindowText(), offset), length));
  cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor, count);
  edit->setTextCursor(cursor);
  edit->ensureCursorVisible();
}

CString CEdit::GetSelectedText() const {
  auto* edit = qobject_cast<QPlainTextEdit*>(Widget());
  return edit ? FromScreen(edit->textCursor().selectedText().replace(QChar::ParagraphSeparator, '\n'))
              : CString();
}

void CEdit::SelectAll() {
  if (auto* line = qobject_cast<QLineEdit*>(Widget())) line->selectAll();
}

CListBox::CListBox(QListWidget* widget) { Attach(widget); }

int CListBox::GetCount() const { return ListOf(*this).count(); }

CString CListBox::GetText(int index) const { return FromBytes(ListOf(*this).item(index)->data(kBytes)); }

int CListBox::AddString(const CString& text) {
  auto* item = new QListWidgetItem;
  Show(*item, text);
  ListOf(*this).addItem(item);
  return GetCount() - 1;
}

void CListBox::SetText(int index, const CString& text) { Show(*ListOf(*this).item(index), text); }

void CListBox::DeleteString(int index) { delete ListOf(*this).takeItem(index); }

void CListBox::ResetContent() { ListOf(*this).clear(); }

int CListBox::Find(const CString& text) const { return FindText(*this, text); }

int CListBox::FindStringExact(int after, const CString& text) const {
  const QString wanted = ToScreen(text);
  const int count = GetCount();
  for (int i = 1; i <= count; ++i) {
    const int at = (after + i) % count;
    if (ListOf(*this).item(at)->text().compare(wanted, Qt::CaseInsensitive) == 0) return at;
  }
  return -1;
}

int CListBox::GetCurSel() const {
  const QListWidget& list = ListOf(*this);
  const QListWidgetItem* current = list.currentItem();
  return current && current->isSelected() ? list.currentRow() : -1;
}

void CListBox::SetCurSel(int index) {
  QListWidget& list = ListOf(*this);
  list.setCurrentRow(index);
  if (index < 0) list.clearSelection();
}

std::vector<int> CListBox::GetSelItems() const {
  const QListWidget& list = ListOf(*this);
  std::vector<int> marked;
  for (int i = 0; i < list.count(); ++i)
    if (list.item(i)->isSelected()) marked.push_back(i);
  return marked;
}

void CListBox::SelectAll() { ListOf(*this).selectAll(); }

void CListBox::SetTexts(const CStringArray& texts) {
  ResetContent();
  for (const CString& text : texts) AddString(text);
}

CStringArray CListBox::GetTexts() const {
  CStringArray texts;
  for (int i = 0; i < GetCount(); ++i) texts.Add(GetText(i));
  return texts;
}

QListWidget* CListBox::NewWidget(QWidget* parent) { return new CKeyList(parent); }

QListWidget* CDragListBox::NewWidget(QWidget* parent) {
  auto* list = new CDragList(parent);
  list->setDragDropMode(QAbstractItemView::InternalMove);
  list->setDefaultDropAction(Qt::MoveAction);
  return list;
}

namespace {

QComboBox& ComboOf(const CWnd& window) { return *static_cast<QComboBox*>(window.Widget()); }

}  // namespace

CComboBox::CComboBox(QComboBox* widget) { Attach(widget); }

void CComboBox::SetWindowText(const CString& text) { ComboOf(*this).setEditText(ToScreen(text)); }

CString CComboBox::GetWindowText() const {
  const int selected = GetCurSel();
  return selected >= 0 ? GetText(selected) : FromScreen(ComboOf(*this).currentText());
}

int CComboBox::GetCount() const { return ComboOf(*this).count(); }

CString CComboBox::GetText(int index) const { return FromBytes(ComboOf(*this).itemData(index, kBytes)); }

int CComboBox::AddString(const CString& text) {
  ComboOf(*this).addItem(ToScreen(text));
  ComboOf(*this).setItemData(GetCount() - 1, ToBytes(text), kBytes);
  return GetCount() - 1;
}

int CComboBox::GetCurSel() const {
  const QComboBox& combo = ComboOf(*this);
  return combo.currentText() == combo.itemText(combo.currentIndex()) ? combo.currentIndex() : -1;
}

void CComboBox::SetCurSel(int index) { ComboOf(*this).setCurrentIndex(index); }

int CComboBox::Find(const CString& text) const { return FindText(*this, text); }

}  // namespace vastra
