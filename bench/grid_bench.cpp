// Refresh of the scan grid, 30 rows, compared with a plain table of the toolkit on a model that already has
// the numbers, painted at once.
#include <QAbstractButton>
#include <QAbstractTableModel>
#include <QApplication>
#include <QHeaderView>
#include <QTableView>

#include <array>

#include "bench/ratios.h"
#include "vastra/core/link.h"
#include "vastra/core/messenger.h"
#include "vastra/platform/chooser.h"
#include "vastra/platform/file_system.h"
#include "vastra/stages/log_input.h"
#include "vastra/stages/log_trendings.h"
#include "vastra/views/var_scan_dlg.h"

namespace vastra::bench {
namespace {

constexpr int kRows = 30;

// Numbers that change from refresh to refresh.
float ValueOf(int row, int round) { return static_cast<float>(row * 1000 + round % 1000) * 0.37F; }

// Returns the file with the selection.
class CGiven : public CChooser {
 public:
  explicit CGiven(const CString& path) : m_path(path), m_former(SetChooser(this)) {}
  ~CGiven() override { SetChooser(m_former); }
  int ChooseFile(const CFileQuestion&, CString& path) override { return path = m_path, 1; }
  int ChooseFiles(const CFileQuestion&, CStringArray&) override { return 0; }
  int ChooseFolder(CString&) override { return 0; }
  int ChooseColour(COLORREF&) override { return 0; }

 private:
  CString m_path;
  CChooser* m_former;
};

// The grid on its stage, which has a sample of 100 variables. The grid shows the first 30.
struct CGrid {
  CGrid() {
    CLink::SetMessenger(&messenger);
    CStringArray names, shown;
    for (int i = 0; i < 100; ++i) {
      CString name;
      name.Format("Variable_%d", i);
      names.Add(name);
      if (i < kRows) shown.Add(name);
    }
    trendings.GetOptions()->m_baseVars = names;
    trendings.Open(names);
    sample.m_values.SetSize(names.GetSize());
    window = new CVarScanDlg;
    window->SetInputPointers(&input, &trendings, &window);
    window->Create();
    const CString path = "/dev/shm/vastra-grid-bench.grd";
    const CGiven given(path);
    WriteSelection(path, shown);
    for (QAbstractButton* button : window->Widget()->findChildren<QAbstractButton*>())
      if (button->text() == "Load") button->click();
    DeleteFile(path);
    window->ShowWindow(SW_SHOW);
    QApplication::processEvents();
  }
  ~CGrid() { window->DestroyWindow(); }

  void Scan() {
    ++round;
    for (int i = 0; i < kRows; ++i) sample.m_values[i] = ValueOf(i, round);
    trendings.Write(sample);
  }
  // Of the cell in the last row.
  QString Last() const {
    return window->Widget()->findChild<QTableView*>()->model()->index(kRows - 1, 1).data().toString();
  }

  CMessenger messenger;
  CLogInput input;
  CLogTrendings trendings;
  CLogSample sample;
  CVarScanDlg* window = nullptr;
  int round = 0;
};

// The plain table: the same view with the same settings, on numbers that are already there.
class CModel : public QAbstractTableModel {
 public:
  int rowCount(const QModelIndex&) const override { return kRows; }
  int columnCount(const QModelIndex&) const override { return 2; }
  QVariant data(const QModelIndex& index, int role) const override {
    if (role != Qt::DisplayRole) return {};
    if (index.column() == 0) return names[index.row()];
    return QString::number(static_cast<double>(values[static_cast<std::size_t>(index.row())]), 'f', 2);
  }
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override {
    if (role != Qt::DisplayRole || orientation != Qt::Horizontal) return {};
    return section == 0 ? "Variables" : "Values";
  }

  QStringList names;
  std::array<float, kRows> values = {};
};

struct CTable {
  explicit CTable(const QTableView& like) {
    for (int row = 0; row < kRows; ++row) model.names.append(QString("Variable_%1").arg(row));
    view.setModel(&model);
    view.setFont(like.font());
    view.verticalHeader()->hide();
    view.verticalHeader()->setMinimumSectionSize(1);
    view.verticalHeader()->setDefaultSectionSize(like.verticalHeader()->defaultSectionSize());
    for (const int column : {0, 1}) view.setColumnWidth(column, like.columnWidth(column));
    view.resize(like.size());
    view.show();
    QApplication::processEvents();
  }
  void Scan() {
    ++round;
    for (int i = 0; i < kRows; ++i) model.values[static_cast<std::size_t>(i)] = ValueOf(i, round);
  }

  CModel model;
  QTableView view;
  int round = 0;
};

void GridRefreshed(benchmark::State& state) {
  CGrid grid;
  for (auto _ : state) {
    grid.Scan();
    grid.window->Refresh();
  }
  const QString shown = QString::number(static_cast<double>(ValueOf(kRows - 1, grid.round)), 'f', 2);
  if (grid.Last() != shown) state.SkipWithError("the grid does not show the newest value");
}

void TableRepainted(benchmark::State& state) {
  const CGrid grid;
  CTable table(*grid.window->Widget()->findChild<QTableView*>());
  grid.window->ShowWindow(SW_HIDE);
  for (auto _ : state) {
    table.Scan();
    table.view.viewport()->repaint();
  }
}

BENCHMARK(GridRefreshed);
BENCHMARK(TableRepainted);

}  // namespace
}  // namespace vastra::bench

int main(int argc, char** argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  const QApplication application(argc, argv);
  return vastra::bench::RunWithGoals(argc, argv,
                                     {{"a grid of 30 rows refreshed : a plain table repainted",
                                       {"GridRefreshed"},
                                       {"TableRepainted"},
                                       1,
                                       false}});
}
