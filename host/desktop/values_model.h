// CValuesModel: hands the rows of CValueTable to a view.
#pragma once

#include <QAbstractTableModel>

#include "host/desktop/value_table.h"

namespace vastra {

class CValuesModel : public QAbstractTableModel {
 public:
  explicit CValuesModel(QObject* parent);

  void SetSource(CValueSource source) { m_table.SetSource(std::move(source)); }
  // Copies what the logger has now. True: a text can have changed, see ShowRows.
  bool Look();
  // Announces which texts of the rows first to last have changed since the last call. Those rows are all that
  // the view shows.
  void ShowRows(int first, int last);
  // Sorts again if the order can have changed with the values. The selected rows stay selected.
  void SortAgain();
  void Search(const QString& words);
  void Reset() { m_table.Reset(); }
  int Variables() const { return m_table.Variables(); }
  // The cells of rows, a line for each row, with tabs between them.
  QString Lines(const QModelIndexList& rows) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;
  void sort(int column, Qt::SortOrder order) override;
  // The names of the variables as text, a line for each.
  QStringList mimeTypes() const override { return {"text/plain"}; }
  QMimeData* mimeData(const QModelIndexList& indexes) const override;

 private:
  int VariableOf(const QModelIndex& index) const;
  QString Text(int variable, int column) const;
  void Reorder(std::vector<int> order);
  // What the view shows of a row.
  struct CShownRow {
    int variable = -1;
    bool isStale = false;
    QString texts[CValueTable::columns];  // of the columns that change with the samples
  };
  CShownRow RowNow(int row) const;
  void Announce(int row, const CShownRow& before, const CShownRow& now);

  CValueTable m_table;
  std::vector<CShownRow> m_shown;  // from m_firstShown on
  int m_firstShown = 0;
};

}  // namespace vastra
