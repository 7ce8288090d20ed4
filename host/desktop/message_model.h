// CMessageModel: the message log as a table for a view: the lines of a CMessageStore whose severity is shown,
// oldest first. It takes new messages at most ten times a second, also while no window shows them.
#pragma once

#include <QAbstractTableModel>
#include <QTimer>

#include "host/desktop/message_store.h"

namespace vastra {

class CMessageModel : public QAbstractTableModel {
 public:
  enum EColumn { timeColumn, severityColumn, partColumn, textColumn, countColumn, columns };

  CMessageModel();

  // From any thread, as long as the model exists.
  void AddMessage(CLoggedMessage line) { m_store.Add(std::move(line)); }

  // See CMessageStore.
  void Open(const CString& configuration);
  void MoveTo(const CString& configuration);
  void Clear();

  // Shows only lines up to severity, from severityFatal to severityNotice, which shows all.
  void ShowUpTo(char severity);
  char LeastShown() const { return m_leastShown; }
  std::size_t Lines() const { return m_store.Size(); }  // shown or not

  const CLoggedMessage& Line(int row) const;
  // The row as one line, with tabs between its columns, and in words for a reader of this message alone.
  QString Text(int row) const;
  QString Details(int row) const;
  // The first row from start on, in steps of 1 or -1 and then from the other end, that contains all words, in
  // any letter case; -1: there is none.
  int Find(const QStringList& words, int start, int step) const;

  int rowCount(const QModelIndex& parent = {}) const override;
  int columnCount(const QModelIndex& parent = {}) const override;
  QVariant data(const QModelIndex& index, int role) const override;
  QVariant headerData(int section, Qt::Orientation orientation, int role) const override;

 private:
  void Wake();
  void Take();
  void ShowAll();
  void RemoveFront();
  void ShowChange(std::uint64_t number);
  void ShowNew(std::size_t count);
  bool IsShown(const CLoggedMessage& line) const { return line.severity <= m_leastShown; }
  QString Field(const CLoggedMessage& line, int column) const;
  bool HasWords(int row, const QStringList& words) const;

  QTimer m_timer;
  std::uint64_t m_first = 0;         // the number of the first line of the store
  std::deque<std::uint64_t> m_rows;  // the numbers of the lines that are shown
  char m_leastShown = severityNotice;
  CMessageStore m_store;
};

}  // namespace vastra
