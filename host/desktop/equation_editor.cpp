#include "host/desktop/equation_editor.h"

#include <QCheckBox>
#include <QCloseEvent>
#include <QComboBox>
#include <QHeaderView>
#include <QLabel>
#include <QPushButton>
#include <QShortcut>
#include <QSplitter>
#include <QTableWidget>
#include <QVBoxLayout>

#include <algorithm>
#include <map>

#include "host/desktop/equation_edit.h"
#include "vastra/platform/prompt.h"
#include "vastra/ui/focus_ring.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr std::chrono::milliseconds kValuesPause{300};
enum EValueColumn { valueName, valueNumber };

QString ShownNumber(float value) { return QString::number(static_cast<double>(value), 'g', 7); }

QTableWidgetItem* FixedCell(const QString& text) {
  auto* cell = new QTableWidgetItem(text);
  cell->setFlags(Qt::ItemIsEnabled | Qt::ItemIsSelectable);
  return cell;
}

}  // namespace

CEquationEditor::CEquationEditor(CListener listener)
    : m_listener(std::move(listener)),
      m_choice(new QComboBox(this)),
      m_edit(new CEquationEdit(this)),
      m_fault(new QLabel(this)),
      m_live(new QCheckBox("&Newest sample", this)),
      m_values(new QTableWidget(0, 2, this)),
      m_apply(new QPushButton("&Apply", this)),
      m_revert(new QPushButton("&Revert", this)),
      m_next(new QPushButton("Next &Sample", this)) {
  setWindowTitle("Equation Editor");
  MakeLayout();
  connect(m_choice, &QComboBox::activated, this, [this](int place) { Choose(place); });
  connect(m_edit, &QPlainTextEdit::textChanged, this, [this] { TakeText(); });
  connect(m_apply, &QPushButton::clicked, this, [this] { Apply(); });
  connect(m_revert, &QPushButton::clicked, this, [this] { Revert(); });
  connect(new QShortcut(QKeySequence::Save, this), &QShortcut::activated, this, [this] { Apply(); });
  connect(&m_timer, &QTimer::timeout, this, [this] { Look(); });
  m_timer.start(kValuesPause);
}

void CEquationEditor::MakeLayout() {
  m_choice->setAccessibleName("Place");
  m_choice->setSizeAdjustPolicy(QComboBox::AdjustToMinimumContentsLengthWithIcon);
  m_edit->setAccessibleName("Equations");
  m_fault->setAccessibleName("Fault");
  m_fault->setWordWrap(true);
  m_edit->setMinimumWidth(fontMetrics().averageCharWidth() * 20);
  m_fault->setTextFormat(Qt::PlainText);
  m_apply->setToolTip("Puts the text into the configuration (Ctrl+S)");
  m_revert->setToolTip("Shows the text of the configuration again");
  auto* left = new QWidget(this);
  auto* text = new QVBoxLayout(left);
  text->setContentsMargins({});
  text->addWidget(m_edit, 1);
  text->addWidget(m_fault);
  auto* parts = new QSplitter(this);
  parts->setChildrenCollapsible(false);
  parts->addWidget(left);
  parts->addWidget(MakeValues());
  parts->setStretchFactor(0, 2);
  parts->setStretchFactor(1, 1);
  auto* buttons = new QHBoxLayout;
  auto* close = new QPushButton("&Close", this);
  connect(close, &QPushButton::clicked, this, &QWidget::close);
  buttons->addStretch();
  for (QPushButton* button : {m_apply, m_revert, close}) buttons->addWidget(button);
  auto* all = new QVBoxLayout(this);
  all->addWidget(m_choice);
  all->addWidget(parts, 1);
  all->addLayout(buttons);
  resize(fontMetrics().averageCharWidth() * 120, fontMetrics().height() * 30);
}

QWidget* CEquationEditor::MakeValues() {
  m_live->setChecked(true);
  m_live->setToolTip("The values come from the newest sample of the logger, until one is typed");
  m_next->setToolTip("Runs the equations once more: variables keep their values from sample to sample");
  m_values->setAccessibleName("Values");
  m_values->setMinimumWidth(fontMetrics().averageCharWidth() * 16);
  m_values->setHorizontalHeaderLabels({"Variable", "Value"});
  m_values->horizontalHeader()->setStretchLastSection(true);
  m_values->verticalHeader()->hide();
  m_values->setTabKeyNavigation(false);
  m_values->setEditTriggers(QAbstractItemView::DoubleClicked | QAbstractItemView::EditKeyPressed |
                            QAbstractItemView::AnyKeyPressed);
  RingOnFocus(*m_values);
  connect(m_live, &QCheckBox::toggled, this, [this] { Look(); });
  connect(m_next, &QPushButton::clicked, this, [this] { Run(); });
  connect(m_values, &QTableWidget::itemChanged, this, [this] {
    if (m_isFilling) return;
    m_live->setChecked(false);
    Run();
  });
  auto* side = new QWidget(this);
  auto* layout = new QVBoxLayout(side);
  layout->setContentsMargins({});
  layout->addWidget(m_live);
  layout->addWidget(m_values, 1);
  layout->addWidget(m_next);
  return side;
}

void CEquationEditor::Open(const CString& key) {
  ShowConfiguration();
  const auto found =
      std::ranges::find_if(m_places, [&](const CEquationPlace& place) { return place.Has(key); });
  if (found != m_places.end()) Choose(static_cast<int>(found - m_places.begin()));
  isMinimized() ? showNormal() : show();
  raise();
  activateWindow();
  m_edit->setFocus();
  if (m_hasFault) GoToFault();
}

void CEquationEditor::ShowConfiguration() {
  const bool wasChanged = IsChanged();
  const CString key = Key();
  m_places = m_listener.places();
  const auto found =
      std::ranges::find_if(m_places, [&](const CEquationPlace& place) { return place.Has(key); });
  const bool isGone = found == m_places.end();
  m_place = m_places.empty() ? -1 : isGone ? 0 : static_cast<int>(found - m_places.begin());
  m_choice->clear();
  for (const CEquationPlace& place : m_places) m_choice->addItem(ToScreen(m_listener.words(place.key)));
  m_choice->setCurrentIndex(m_place);
  if (!wasChanged || isGone)
    ShowPlace();
  else
    TakeText();
}

const CEquationPlace* CEquationEditor::Place() const {
  return m_place >= 0 && static_cast<std::size_t>(m_place) < m_places.size()
             ? &m_places[static_cast<std::size_t>(m_place)]
             : nullptr;
}

CString CEquationEditor::Key() const { return Place() ? Place()->key : CString(); }

CString CEquationEditor::Text() const { return FromScreenLines(m_edit->toPlainText()); }

bool CEquationEditor::IsChanged() const { return m_edit->document()->isModified(); }

void CEquationEditor::Choose(int place) {
  if (place == m_place) return;
  if (!MayLeave()) return m_choice->setCurrentIndex(m_place);
  m_place = place;
  m_choice->setCurrentIndex(place);
  ShowPlace();
}

void CEquationEditor::ShowPlace() {
  m_edit->setEnabled(Place() != nullptr);
  m_edit->SetNames(Place() ? Place()->names : CStringArray(), Place() ? Place()->results : CStringArray());
  m_trial = CEquationTrial();
  m_edit->setPlainText(Place() ? ToScreenLines(Place()->text) : QString());
  m_edit->document()->setModified(false);
  TakeText();
}

void CEquationEditor::TakeText() {
  const CString text = Text();
  const CEquationTextFault fault =
      Place() ? m_trial.Compile(text, Place()->names, Place()->areNamesKnown) : CEquationTextFault();
  m_hasFault = fault.offset >= 0;
  ShowFault(fault);
  m_apply->setEnabled(IsChanged() && !m_hasFault);
  m_revert->setEnabled(IsChanged());
  if (!m_hasFault) FillValues();
  m_values->setEnabled(!m_hasFault);
  m_next->setEnabled(!m_hasFault);
}

void CEquationEditor::ShowFault(const CEquationTextFault& fault) {
  if (fault.offset < 0) {
    m_edit->MarkFault(-1, 0);
    const bool areKnown = !Place() || Place()->areNamesKnown;
    return m_fault->setText(areKnown ? "No fault" : "The variables are not known yet: names are not checked");
  }
  const int place = ScreenPlace(Text(), fault.offset);
  m_edit->MarkFault(place, fault.length);
  m_fault->setText(QString(QChar(0x2716)) + " " + ToScreen(fault.message));
}

// A text with a fault is not applied: the stage would not open.
bool CEquationEditor::Apply() {
  if (!IsChanged()) return true;
  if (m_hasFault) return GoToFault(), false;
  m_edit->document()->setModified(false);
  if (m_listener.apply(Key(), Text())) {
    ShowConfiguration();
    return true;
  }
  m_edit->document()->setModified(true);
  return false;
}

void CEquationEditor::GoToFault() {
  const CEquationTextFault fault = m_trial.Compile(Text(), Place()->names, Place()->areNamesKnown);
  m_edit->GoTo(ScreenPlace(Text(), fault.offset));
  m_edit->setFocus();
}

void CEquationEditor::Revert() { ShowPlace(); }

bool CEquationEditor::MayLeave() {
  if (!IsChanged()) return true;
  switch (AfxMessageBox("Apply the changes of the equations?", MB_YESNOCANCEL | MB_ICONQUESTION)) {
    case IDYES:
      return Apply();
    case IDNO:
      Revert();
      return true;
    default:
      return false;
  }
}

void CEquationEditor::closeEvent(QCloseEvent* event) {
  if (!MayLeave()) event->ignore();
}

// A row for each variable that the text reads, with the former number, then one for each that it assigns.
void CEquationEditor::FillValues() {
  m_isFilling = true;
  std::map<QString, QString> former;
  for (int row = 0; row < m_values->rowCount(); ++row)
    former[m_values->item(row, valueName)->text()] = m_values->item(row, valueNumber)->text();
  const CStringArray& read = m_trial.Read();
  const auto results = m_trial.Results();
  m_values->setRowCount(read.GetSize() + static_cast<int>(results.size()));
  int row = 0;
  for (const CString& name : read) {
    const auto known = former.find(ToScreen(name));
    m_values->setItem(row, valueName, FixedCell(ToScreen(name)));
    m_values->setItem(row++, valueNumber, new QTableWidgetItem(known == former.end() ? "0" : known->second));
  }
  for (const CEquationTrial::CResult& result : results) {
    auto* name = FixedCell(ToScreen(result.name));
    QFont bold = name->font();
    bold.setBold(true);
    name->setFont(bold);
    m_values->setItem(row, valueName, name);
    m_values->setItem(row++, valueNumber, FixedCell(""));
  }
  m_isFilling = false;
  m_shown = 0;
  Run();
  Look();
}

// Takes the values of the newest sample, if there is a new one.
void CEquationEditor::Look() {
  if (!isVisible() || !m_live->isChecked() || m_hasFault) return;
  const auto live = m_listener.live();
  if (!live || !live->CopyNewest(m_newest) || m_newest.number == m_shown || !m_newest.names) return;
  m_shown = m_newest.number;
  m_isFilling = true;
  for (int row = 0; row < m_trial.Read().GetSize(); ++row) {
    const auto found = std::ranges::find(*m_newest.names, m_trial.Read()[row]);
    const auto place = static_cast<std::size_t>(found - m_newest.names->begin());
    if (place < m_newest.values.size())
      m_values->item(row, valueNumber)->setText(ShownNumber(m_newest.values[place]));
  }
  m_isFilling = false;
  Run();
}

void CEquationEditor::Run() {
  std::vector<float> values;
  for (int row = 0; row < m_trial.Read().GetSize(); ++row) {
    bool isNumber = false;
    const float value = m_values->item(row, valueNumber)->text().toFloat(&isNumber);
    values.push_back(isNumber ? value : 0);
  }
  m_trial.Run(values);
  ShowResults();
}

void CEquationEditor::ShowResults() {
  m_isFilling = true;
  int row = m_trial.Read().GetSize();
  for (const CEquationTrial::CResult& result : m_trial.Results()) {
    m_values->item(row++, valueNumber)
        ->setText(ShownNumber(result.value) + (result.isUndefined ? " (undefined)" : ""));
  }
  m_isFilling = false;
}

}  // namespace vastra
