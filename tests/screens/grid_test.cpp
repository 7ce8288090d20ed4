// The grid of names and values.
#include <gtest/gtest.h>

#include <QHeaderView>
#include <QTableView>

#include "tests/support/names.h"
#include "tests/support/windows.h"
#include "vastra/screens/grid_wnd.h"

namespace vastra {
namespace {

constexpr CControl kControls[] = {{CControl::grid, "Grid", {7, 7, 124, 313}}};
constexpr CDialogTemplate kTemplate = {"", {140, 330}, kControls};

TEST(Grid, ShowsItsOwnersArraysAndThirtyRows) {
  CGridWnd grid;
  CDialog dialog(kTemplate);
  EXPECT_EQ(0u, grid.GetRowCount());
  ASSERT_EQ(1, dialog.Create());
  grid.SubclassDlgItem(dialog, "Grid");
  CStringArray names = Names({"a", "\xE9"});
  CArray<float, float> values;
  for (const float value : {1.005f, -123456.789f, 0.0f}) values.Add(value);
  grid.InitGrid(&names, &values);
  EXPECT_EQ(30u, grid.GetRowCount());
  EXPECT_EQ(1u, grid.GetColCount());

  auto* view = Find<QTableView>(dialog.Widget(), "Grid");
  const QAbstractItemModel& model = *view->model();
  const auto row = [&](int index) {
    return (model.index(index, 0).data().toString() + "|" + model.index(index, 1).data().toString())
        .toStdString();
  };
  EXPECT_EQ(30, model.rowCount());
  EXPECT_EQ("Variables", model.headerData(0, Qt::Horizontal).toString());
  EXPECT_EQ("Values", model.headerData(1, Qt::Horizontal).toString());
  EXPECT_EQ("a|1.00", row(0));
  EXPECT_EQ("\u00E9|-123456.79", row(1));
  EXPECT_EQ("|0.00", row(2)) << "names and values end apart";
  EXPECT_EQ("|", row(3));
  EXPECT_EQ("|", row(29));
  EXPECT_EQ(100, view->columnWidth(0));
  EXPECT_EQ(85, view->columnWidth(1));
  EXPECT_EQ(20, view->horizontalHeader()->height());
  EXPECT_EQ(8, view->font().pointSize());
  EXPECT_FALSE(model.flags(model.index(0, 1)) & Qt::ItemIsEditable);

  names.RemoveAll();
  values.SetSize(1);
  EXPECT_EQ("|1.00", row(0)) << "a copy is shown";
  EXPECT_EQ("|", row(1));
}

}  // namespace
}  // namespace vastra
