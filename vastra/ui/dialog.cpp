#include "vastra/ui/dialog.h"

#include <QApplication>
#include <QButtonGroup>
#include <QCheckBox>
#include <QComboBox>
#include <QDialog>
#include <QFrame>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpressionValidator>
#include <QTabWidget>
#include <QTableView>

#include <cstdio>
#include <cstdlib>
#include <limits>

#include "vastra/ui/number_text.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr int kLineOfText = 12;  // dialog units; a higher label has several lines

// Pixels of 4 horizontal and 8 vertical dialog units of font.
QSize UnitsOf(const QFont& font) {
  const QFontMetrics metrics(font);
  const QString letters = "ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz";
  return {(metrics.horizontalAdvance(letters) / 26 + 1) / 2, metrics.height()};
}

QRect ToPixels(QSize units, int x, int y, int cx, int cy) {
  const auto across = [&](int value) { return value * units.width() / 4; };
  const auto down = [&](int value) { return value * units.height() / 8; };
  return {across(x), down(y), across(x + cx) - across(x), down(y + cy) - down(y)};
}

QString Caption(const CControl& model) { return ToScreen(model.caption).replace('&', "&&"); }

// A control without input passes the mouse events to the dialog.
QFrame* NewFrame(QWidget& parent, bool hasEdges) {
  auto* frame = new QFrame(&parent);
  if (hasEdges) {
    frame->setFrameStyle(QFrame::Panel | QFrame::Sunken);
    frame->setLineWidth(2);
  }
  frame->setAttribute(Qt::WA_TransparentForMouseEvents);
  return frame;
}

QPushButton* NewButton(const CControl& model, QWidget& parent) {
  auto* button = new QPushButton(Caption(model), &parent);
  // Return presses the default button or the one with the focus.
  button->setDefault(model.kind == CControl::defaultButton);
  return button;
}

QListWidget* NewList(const CControl& model, QWidget& parent) {
  auto* list = CListBox::NewWidget(&parent);
  if (model.kind == CControl::multiListBox) list->setSelectionMode(QAbstractItemView::ExtendedSelection);
  return list;
}

QLineEdit* NewLine(const CControl& model, QWidget& parent) {
  auto* line = new QLineEdit(&parent);
  line->setMaxLength(std::numeric_limits<int>::max());  // the toolkit's limit would cut the text
  if (model.kind == CControl::numberEdit)
    line->setValidator(new QRegularExpressionValidator(QRegularExpression("[0-9]*"), line));
  return line;
}

QComboBox* NewCombo(const CControl& model, QWidget& parent) {
  auto* combo = new QComboBox(&parent);
  if (model.kind != CControl::comboEdit) return combo;
  combo->setEditable(true);
  combo->setInsertPolicy(QComboBox::NoInsert);
  combo->setCompleter(nullptr);  // it would change the case of typed text to that of an entry
  return combo;
}

QPlainTextEdit* NewLines(QWidget& parent) {
  auto* lines = new QPlainTextEdit(&parent);
  lines->setTabChangesFocus(true);
  lines->setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOn);
  return lines;
}

// The window of a plain widget.
class CPlace : public CWnd {
 public:
  explicit CPlace(QWidget* widget) { Attach(widget); }
};

std::unique_ptr<CWnd> NewControl(const CControl& model, QWidget& parent) {
  switch (model.kind) {
    case CControl::groupBox:
      return std::make_unique<CPlace>(new QGroupBox(Caption(model), &parent));
    case CControl::text: {
      auto* label = new QLabel(ToScreen(model.caption), &parent);
      label->setTextFormat(Qt::PlainText);
      if (model.place.cy > kLineOfText) {
        label->setWordWrap(true);
        label->setAlignment(Qt::AlignTop | Qt::AlignLeft);
      }
      return std::make_unique<CStatic>(label);
    }
    case CControl::button:
    case CControl::defaultButton:
      return std::make_unique<CButton>(NewButton(model, parent));
    case CControl::checkBox:
      return std::make_unique<CButton>(new QCheckBox(Caption(model), &parent));
    case CControl::firstRadioButton:
    case CControl::radioButton:
      return std::make_unique<CButton>(new QRadioButton(Caption(model), &parent));
    case CControl::edit:
    case CControl::numberEdit:
      return std::make_unique<CEdit>(NewLine(model, parent));
    case CControl::multiLineEdit:
      return std::make_unique<CEdit>(NewLines(parent));
    case CControl::listBox:
    case CControl::multiListBox:
      return std::make_unique<CListBox>(NewList(model, parent));
    case CControl::dragListBox:
      return std::make_unique<CDragListBox>(CDragListBox::NewWidget(&parent));
    case CControl::comboBox:
    case CControl::comboEdit:
      return std::make_unique<CComboBox>(NewCombo(model, parent));
    case CControl::tabs:
      return std::make_unique<CPlace>(new QTabWidget(&parent));
    case CControl::grid:
      return std::make_unique<CPlace>(new QTableView(&parent));
    case CControl::frame:
      return std::make_unique<CPlace>(NewFrame(parent, true));
    case CControl::area:
      return std::make_unique<CPlace>(NewFrame(parent, false));
  }
  return nullptr;
}

}  // namespace

// The window, which gets the keys of a dialog and its close box.
class CDialog::CWidget : public QDialog {
 public:
  explicit CWidget(QWidget* parent) : QDialog(parent) {}

  void accept() override {
    if (m_owner && *m_owner) (*m_owner)->OnOK();
  }
  void reject() override {
    if (m_owner && *m_owner) (*m_owner)->OnClose();
  }

  std::shared_ptr<CDialog*> m_owner;
};

IMPLEMENT_DYNAMIC(CDialog, CWnd)

CDialog::~CDialog() {
  Leave();
  Abandon();
}

int CDialog::DestroyWindow() {
  Leave();
  return CWnd::DestroyWindow();
}

void CDialog::Leave() {
  if (m_self) *m_self = nullptr;
}

void CDialog::Release() {
  DestroyWindow();
  m_items.clear();
}

void CDialog::NoSuchControl(const char* caption) {
  std::fprintf(stderr, "no control \"%s\" in the dialog's template\n", caption);
  std::abort();
}

CDialog::CWidget* CDialog::Make(QWidget* parent) {
  auto* widget = new CWidget(parent);
  widget->setWindowFlag(Qt::WindowContextHelpButtonHint, false);
  widget->setWindowFlag(Qt::WindowMaximizeButtonHint, (m_model.style & CDialogTemplate::resizable) != 0);
  widget->setWindowFlag(Qt::WindowMinimizeButtonHint, (m_model.style & CDialogTemplate::minimizeBox) != 0);
  Fill(widget);
  widget->m_owner = m_self;
  if (!(m_model.style & CDialogTemplate::resizable)) widget->setFixedSize(widget->size());
  return widget;
}

void CDialog::Fill(QWidget* widget) {
  Attach(widget);
  m_self = std::make_shared<CDialog*>(this);
  SetWindowText(m_model.title);
  m_items.clear();
  for (const CControl& model : m_model.controls) AddControl(model, *widget);
  const QSize size = ToPixels(UnitsOf(widget->font()), 0, 0, m_model.size.cx, m_model.size.cy).size();
  widget->setMinimumSize(size);
  widget->resize(size);
  CDialog::OnSize(size.width(), size.height());
}

void CDialog::AddControl(const CControl& model, QWidget& parent) {
  m_items.push_back({&model, NewControl(model, parent)});
  QWidget* widget = m_items.back().window->Widget();
  widget->setAccessibleName(ToScreen(model.caption));
  if (model.kind == CControl::firstRadioButton) m_radios = new QButtonGroup(&parent);
  if (auto* radio = qobject_cast<QRadioButton*>(widget)) m_radios->addButton(radio);
  if (CString(model.caption) == "OK") On("OK", [this] { OnOK(); });
  if (CString(model.caption) == "Cancel") On("Cancel", [this] { OnCancel(); });
}

void CDialog::OnSize(int cx, int cy) {
  if (!Widget()) return;
  const QSize units = UnitsOf(Widget()->font());
  const QSize natural = ToPixels(units, 0, 0, m_model.size.cx, m_model.size.cy).size();
  const QSize more(cx - natural.width(), cy - natural.height());
  for (const CItem& item : m_items) {
    const auto& [kind, caption, at, growth] = *item.model;
    QRect place = ToPixels(units, at.x, at.y, at.cx, at.cy);
    place.translate(growth & CControl::moveX ? more.width() : 0,
                    growth & CControl::moveY ? more.height() : 0);
    place.adjust(0, 0, growth & CControl::growX ? more.width() : 0,
                 growth & CControl::growY ? more.height() : 0);
    item.window->Widget()->setGeometry(place);
  }
}

int CDialog::DoModal() {
  CWidget* widget = Make(m_parent ? m_parent->Widget() : GetActiveWidget());
  m_modal = true;
  m_ended = false;
  m_result = IDCANCEL;  // the result if the parent is destroyed
  if (m_model.style & CDialogTemplate::blocksParent) widget->setWindowModality(Qt::WindowModal);
  OnInitDialog();
  if (!m_ended) widget->exec();
  m_modal = false;
  Release();
  return m_result;
}

int CDialog::Create(CWnd* parent) {
  QWidget* owner = parent ? parent->Widget() : GetActiveWidget();
  while (!parent && dynamic_cast<CWidget*>(owner)) owner = owner->parentWidget();
  Make(owner);
  const std::shared_ptr<CDialog*> self = m_self;  // OnInitDialog can delete this object
  OnInitDialog();
  return *self != nullptr;
}

void CDialog::EndDialog(int result) {
  if (!m_modal) {
    DestroyWindow();
    return;
  }
  m_ended = true;
  m_result = result;
  static_cast<CWidget*>(Widget())->done(result);
}

void CDialog::On(const char* caption, std::function<void()> told, ENotify what) {
  const auto handler = [self = m_self, told = std::move(told)] {
    if (*self) told();
  };
  for (const CItem& item : m_items) {
    if (CString(item.model->caption) != caption) continue;
    QWidget* widget = item.window->Widget();
    if (auto* button = qobject_cast<QAbstractButton*>(widget)) {
      QObject::connect(button, &QAbstractButton::clicked, button, handler);
    } else if (auto* list = qobject_cast<QListWidget*>(widget); list && what == ENotify::doubleClicked) {
      QObject::connect(list, &QListWidget::itemDoubleClicked, list, handler);
    } else if (auto* combo = qobject_cast<QComboBox*>(widget); combo && what == ENotify::selected) {
      QObject::connect(combo, &QComboBox::activated, combo, handler);
    } else if (what == ENotify::focused && !qobject_cast<QGroupBox*>(widget)) {
      QObject::connect(qApp, &QApplication::focusChanged, widget, [widget, handler](QWidget*, QWidget* now) {
        if (now == widget) handler();
      });
    }
  }
}

int CDialog::ReadNumber(const char* caption, UINT low, UINT high, UINT& value) const {
  CEdit& edit = Edit(caption);
  std::int64_t number = 0;
  if (ParseWhole(edit.GetWindowText(), low, high, number)) {
    value = static_cast<UINT>(number);
    return 1;
  }
  CString text;
  text.Format("Please enter a whole number from %u to %u.", low, high);
  AfxMessageBox(text);
  edit.SetFocus();
  edit.SelectAll();
  return 0;
}

void CDialog::ShowNumber(const char* caption, UINT value) const {
  Edit(caption).SetWindowText(CString(std::to_string(value)));
}

}  // namespace vastra
