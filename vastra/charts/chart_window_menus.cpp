// The menus and the tool bar of a chart, and its files.
#include <QActionGroup>
#include <QApplication>
#include <QClipboard>
#include <QFile>
#include <QMenu>
#include <QMenuBar>
#include <QStyle>
#include <QToolBar>

#include "vastra/charts/chart_colour_rules.h"
#include "vastra/charts/chart_layout_file.h"
#include "vastra/charts/chart_picture.h"
#include "vastra/charts/chart_window.h"
#include "vastra/platform/chooser.h"
#include "vastra/platform/prompt.h"
#include "vastra/platform/save_file.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr qint64 kLargestLayout = 1 << 20;  // bytes of a file
constexpr const char* kLayoutFilter = "Layouts of Charts (*.json)|*.json|All Files (*.*)|*.*||";
constexpr const char* kPictureFilter = "Pictures (*.png *.svg)|*.png;*.svg|All Files (*.*)|*.*||";
constexpr const char* kLogFilter = "Logs (*.rph *.rpd *.journal)|*.rph;*.rpd;*.journal|All Files (*.*)|*.*||";
constexpr const char* kCsvFilter = "CSV (*.csv)|*.csv|All Files (*.*)|*.*||";

// The commands of the tool bar, by their texts in the menus.
constexpr const char* kToolBar[] = {"&Back",           "&Forward", "&Whole Range", "F&ollow",
                                    "Zoom &Rectangle", "&Cursors", "&UTC"};

QIcon LineSwatch(unsigned colour, bool isDark) {
  QPixmap image(16, 16);
  image.fill(QColor::fromRgb(CurveColour(colour, isDark)));
  return image;
}

QString Quoted(const QString& text) { return QString(text).replace('&', "&&"); }

CFileQuestion SaveQuestion(const char* filter, const char* extension) {
  CFileQuestion question;
  question.save = question.asksToOverwrite = true;
  question.filter = filter;
  question.defaultExtension = extension;
  return question;
}

}  // namespace

QAction* CChartWindow::AddAction(QMenu* menu, const char* text, const QKeySequence& key,
                                 std::function<void()> action) {
  QAction* added = menu->addAction(text);
  added->setShortcut(key);
  connect(added, &QAction::triggered, this, std::move(action));
  return added;
}

void CChartWindow::MakeMenus() {
  MakeFileMenu();
  m_commands = MakeChartCommands(*m_view);
  MakeCommandMenu("&View", EChartMenu::view);
  MakeCommandMenu("V&alues", EChartMenu::values);
  MakeCommandMenu("&Cursors", EChartMenu::cursors);
  MakeCommandMenu("C&urves", EChartMenu::curves);
  MakeToolBar();
}

void CChartWindow::MakeFileMenu() {
  QMenu* file = menuBar()->addMenu("&File");
  AddAction(file, "&Add Logs...", QKeySequence::Open, [this] { AskForLogs(); });
  AddAction(file, "Add &Folder...", QKeySequence("Ctrl+Shift+O"), [this] { AskForFolder(); });
  AddAction(file, "&Look Again", QKeySequence("F9"), [this] { m_data->Rescan(); });
  file->addSeparator();
  AddAction(file, "Loa&d Layout...", QKeySequence("Ctrl+L"), [this] { LoadLayout(); });
  AddAction(file, "Sa&ve Layout...", QKeySequence("Ctrl+S"), [this] { SaveLayout(); });
  file->addSeparator();
  AddAction(file, "&Copy Picture", QKeySequence("Ctrl+Shift+C"), [this] { CopyPicture(); });
  AddAction(file, "Save &Picture...", QKeySequence("Ctrl+Shift+S"), [this] { SavePicture(); });
  AddAction(file, "&Export CSV...", QKeySequence("Ctrl+E"), [this] { ExportRows(); });
  file->addSeparator();
  AddAction(file, "&Search Variables", QKeySequence::Find, [this] { m_variables->FocusSearch(); });
  AddAction(file, "C&lose", QKeySequence::Close, [this] { close(); });
}

void CChartWindow::MakeCommandMenu(const char* title, EChartMenu menu) {
  QMenu* added = menuBar()->addMenu(title);
  for (const CChartCommand& command : m_commands)
    if (command.menu == menu) added->addAction(command.action);
  if (menu == EChartMenu::values)
    AddAction(added, "&Range...", QKeySequence("Ctrl+R"), [this] {
      const CChartState& state = m_view->State();
      const auto& curves = state.Layout().curves;
      if (state.Selected() < curves.size()) return EditAxis(curves[state.Selected()].axis);
      if (!state.Layout().axes.empty()) EditAxis(state.Layout().axes.front().id);
    });
  if (menu != EChartMenu::curves) return;
  m_curveMenu = added;
  m_axisMenu = new QMenu("A&xis", added);
  m_colourMenu = new QMenu("C&olour", added);
  QAction* first = added->actions().constFirst();
  added->insertMenu(first, m_axisMenu);
  added->insertMenu(first, m_colourMenu);
  connect(m_axisMenu, &QMenu::aboutToShow, this, [this] { FillAxisMenu(); });
  connect(m_colourMenu, &QMenu::aboutToShow, this, [this] { FillColourMenu(); });
  connect(added, &QMenu::aboutToShow, this, [this] {
    const bool isSelected = m_view->State().Selected() != kNoCurve;
    m_axisMenu->setEnabled(isSelected);
    m_colourMenu->setEnabled(isSelected);
  });
}

void CChartWindow::MakeToolBar() {
  QToolBar* bar = addToolBar("Chart");
  bar->setMovable(false);
  bar->setContextMenuPolicy(Qt::PreventContextMenu);
  bar->setToolButtonStyle(Qt::ToolButtonTextBesideIcon);
  for (const char* text : kToolBar)
    for (const CChartCommand& command : m_commands) {
      if (command.action->text() != text) continue;
      bar->addAction(command.action);
      command.action->setToolTip(QString(command.action->text()).remove('&') + " (" +
                                 command.action->shortcut().toString(QKeySequence::NativeText) + ")");
    }
}

// The axes, called by their curves, and a new one.
void CChartWindow::FillAxisMenu() {
  m_axisMenu->clear();
  const CChartState& state = m_view->State();
  const std::size_t selected = state.Selected();
  if (selected == kNoCurve) return;
  const auto add = [&](const QString& text, int axis) {
    QAction* action = m_axisMenu->addAction(text);
    action->setCheckable(true);
    action->setChecked(axis != 0 && state.Layout().curves[selected].axis == axis);
    connect(action, &QAction::triggered, this,
            [this, selected, axis] { m_view->Change([&](CChartState& s) { s.Use(selected, axis); }); });
  };
  int number = 0;
  for (const CChartAxis& axis : state.Layout().axes) {
    QStringList names;
    for (const CChartCurve& curve : state.Layout().curves)
      if (curve.axis == axis.id) names << ToScreen(curve.variable);
    add(QString("&%1  %2").arg(++number).arg(Quoted(names.join(", ").left(60))), axis.id);
  }
  add("&New Axis", 0);
}

void CChartWindow::FillColourMenu() {
  m_colourMenu->clear();
  const CChartState& state = m_view->State();
  const std::size_t selected = state.Selected();
  if (selected == kNoCurve) return;
  const bool isDark = InkOf(m_view->palette()).isDark;
  for (unsigned colour = 0; colour < kCurveColours; ++colour) {
    QAction* action = m_colourMenu->addAction(LineSwatch(colour, isDark), kCurveColourTable[colour].name);
    connect(action, &QAction::triggered, this, [this, selected, colour] {
      m_view->Change([&](CChartState& s) { s.SetColour(selected, colour); });
    });
  }
}

void CChartWindow::ShowMenu(const QPoint& place) {
  auto* menu = new QMenu(m_view);
  menu->setAttribute(Qt::WA_DeleteOnClose);
  const bool isSelected = m_view->State().Selected() != kNoCurve;
  for (const CChartCommand& command : m_commands) {
    const bool isOfCurve = command.menu == EChartMenu::curves;
    const bool isOften =
        std::ranges::any_of(kToolBar, [&](const char* text) { return command.action->text() == text; });
    if (isOfCurve ? isSelected : isOften) menu->addAction(command.action);
  }
  if (isSelected) {
    menu->addMenu(m_axisMenu);
    menu->addMenu(m_colourMenu);
  }
  menu->popup(m_view->mapToGlobal(place));
}

void CChartWindow::AskForLogs() {
  CFileQuestion question;
  question.filter = kLogFilter;
  question.mustExist = true;
  CStringArray paths;
  if (ChooseFiles(question, paths)) AddPaths({paths.begin(), paths.end()});
}

void CChartWindow::AskForFolder() {
  CString folder;
  if (ChooseFolder(folder)) AddPaths({folder});
}

void CChartWindow::CopyPicture() {
  QGuiApplication::clipboard()->setImage(ChartImage(*m_view, m_view->devicePixelRatioF()));
  Note("The picture was copied");
}

void CChartWindow::SavePicture() {
  CString path;
  if (!ChooseFile(SaveQuestion(kPictureFilter, "png"), path)) return;
  const CString fault = SaveChartPicture(*m_view, path);
  if (!fault.IsEmpty()) return void(AfxMessageBox(fault));
  Note(ToScreen(path + " was written"));
}

void CChartWindow::SaveLayout() {
  CString path;
  if (!ChooseFile(SaveQuestion(kLayoutFilter, "json"), path)) return;
  const QByteArray text = LayoutText(m_view->State().StoredLayout());
  try {
    SaveFile(path, [&](CFile& file) { file.Write(text.constData(), static_cast<UINT>(text.size())); });
    Note(ToScreen(path + " was written"));
  } catch (const CFileException& fault) {
    AfxMessageBox(path + ": " + fault.Text());
  }
}

void CChartWindow::LoadLayout() {
  CFileQuestion question;
  question.filter = kLayoutFilter;
  question.mustExist = true;
  CString path;
  if (!ChooseFile(question, path)) return;
  QFile file(ToScreen(path));
  if (!file.open(QIODevice::ReadOnly))
    return void(AfxMessageBox(path + ": " + FromScreen(file.errorString())));
  const QByteArray text = file.read(kLargestLayout + 1);
  if (text.size() > kLargestLayout) return void(AfxMessageBox(path + ": is too large for a layout"));
  CChartLayout layout;
  if (const CString fault = ReadLayoutText(text, layout); !fault.IsEmpty())
    return void(AfxMessageBox(path + ": " + fault));
  m_view->Change([&](CChartState& state) { state.SetLayout(std::move(layout)); });
}

// The rows that are visible, of the curves that are.
void CChartWindow::ExportRows() {
  const CChartState& state = m_view->State();
  std::vector<CString> variables;
  for (const CChartCurve& curve : state.Layout().curves)
    if (!curve.isHidden) variables.push_back(curve.variable);
  if (variables.empty() || !state.HasRange()) return void(AfxMessageBox("There are no curves to export."));
  if (!m_exportPath.IsEmpty())
    return void(AfxMessageBox(m_exportPath + " is still being written: wait for it, or cancel it first."));
  CString path;
  if (!ChooseFile(SaveQuestion(kCsvFilter, "csv"), path)) return;
  m_exportPath = path;
  m_data->Export({path, state.Range(), std::move(variables), state.Layout().isUtc});
  ShowStatus();
}

}  // namespace vastra
