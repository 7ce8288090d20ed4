#include "host/desktop/message_model.h"

#include <QApplication>
#include <QDateTime>
#include <QIcon>
#include <QPalette>
#include <QStyle>

#include <algorithm>

#include "host/desktop/place_words.h"
#include "vastra/ui/text.h"

namespace vastra {
namespace {

constexpr int kTakePause = 100;  // milliseconds

// Word, sign and colours of a severity, on a light and on a dark background.
struct CSeverityLook {
  const char* word;
  QStyle::StandardPixmap sign;
  QRgb onLight, onDark;
};
constexpr CSeverityLook kSeverityLooks[] = {{"Fatal", QStyle::SP_MessageBoxCritical, 0xFFB00020, 0xFFFF8A80},
                                            {"Error", QStyle::SP_MessageBoxCritical, 0xFFB00020, 0xFFFF8A80},
                                            {"Warning", QStyle::SP_MessageBoxWarning, 0xFF8A5000, 0xFFFFC060},
                                            {"Notice", QStyle::SP_MessageBoxInformation, 0, 0}};

const CSeverityLook& LookOf(const CLoggedMessage& line) {
  return kSeverityLooks[std::min<std::size_t>(static_cast<unsigned char>(line.severity), severityNotice)];
}

// A notice has the colour of other text.
QVariant ColourOf(const CLoggedMessage& line) {
  const CSeverityLook& look = LookOf(line);
  if (look.onLight == 0) return {};
  const bool isDark = QApplication::palette().color(QPalette::Base).lightness() < 128;
  return QColor(isDark ? look.onDark : look.onLight);
}

QDateTime LocalTime(std::int64_t milliseconds) { return QDateTime::fromMSecsSinceEpoch(milliseconds); }
QString LongTime(std::int64_t time) { return LocalTime(time).toString("yyyy-MM-dd hh:mm:ss.zzz"); }

QString ShownText(const std::string& text) { return ToScreen(CString(text)); }

// The line can be older than the configuration, so that names are only those of the line.
QString ShownPart(const CLoggedMessage& line) {
  static const CPlaceWords kWords{CConfiguration()};
  return ToScreen(kWords.Place(CString(line.part)));
}

}  // namespace

CMessageModel::CMessageModel() : m_store([this] { Wake(); }) {
  m_timer.setSingleShot(true);
  m_timer.setInterval(kTakePause);
  connect(&m_timer, &QTimer::timeout, this, [this] { Take(); });
}

// From any thread.
void CMessageModel::Wake() {
  QMetaObject::invokeMethod(
      this,
      [this] {
        if (!m_timer.isActive()) m_timer.start();
      },
      Qt::QueuedConnection);
}

void CMessageModel::Open(const CString& configuration) {
  m_store.Open(configuration);
  ShowAll();
}

void CMessageModel::MoveTo(const CString& configuration) {
  m_store.MoveTo(configuration);
  ShowAll();
}

void CMessageModel::Clear() {
  m_store.Take();
  m_store.Clear();
  ShowAll();
}

void CMessageModel::ShowUpTo(char severity) {
  m_leastShown = severity;
  ShowAll();
}

void CMessageModel::Take() {
  const CMessageStore::CChange change = m_store.Take();
  if (change.isReset) return ShowAll();
  m_first += change.removed;
  RemoveFront();
  const std::uint64_t firstNew = m_first + m_store.Size() - change.added;
  if (change.hasLastChanged) ShowChange(firstNew - 1);
  ShowNew(change.added);
}

void CMessageModel::ShowAll() {
  beginResetModel();
  m_rows.clear();
  m_first = 0;
  for (std::size_t i = 0; i < m_store.Size(); ++i)
    if (IsShown(m_store.Line(i))) m_rows.push_back(i);
  endResetModel();
}

// Removes the rows whose lines are no longer in the store.
void CMessageModel::RemoveFront() {
  const auto end = std::lower_bound(m_rows.begin(), m_rows.end(), m_first);
  if (end == m_rows.begin()) return;
  beginRemoveRows({}, 0, static_cast<int>(end - m_rows.begin()) - 1);
  m_rows.erase(m_rows.begin(), end);
  endRemoveRows();
}

void CMessageModel::ShowChange(std::uint64_t number) {
  if (m_rows.empty() || m_rows.back() != number) return;
  const int row = rowCount() - 1;
  emit dataChanged(index(row, 0), index(row, columns - 1));
}

void CMessageModel::ShowNew(std::size_t count) {
  std::vector<std::uint64_t> numbers;
  for (std::size_t i = m_store.Size() - count; i < m_store.Size(); ++i)
    if (IsShown(m_store.Line(i))) numbers.push_back(m_first + i);
  if (numbers.empty()) return;
  beginInsertRows({}, rowCount(), rowCount() + static_cast<int>(numbers.size()) - 1);
  m_rows.insert(m_rows.end(), numbers.begin(), numbers.end());
  endInsertRows();
}

// A view can ask for a row whose line has left the store until RemoveFront has removed the row.
const CLoggedMessage& CMessageModel::Line(int row) const {
  static const CLoggedMessage kNone;
  const std::uint64_t number = m_rows[static_cast<std::size_t>(row)];
  return number < m_first || number - m_first >= m_store.Size()
             ? kNone
             : m_store.Line(static_cast<std::size_t>(number - m_first));
}

QString CMessageModel::Field(const CLoggedMessage& line, int column) const {
  switch (column) {
    case timeColumn:
      return LongTime(line.first);
    case severityColumn:
      return LookOf(line).word;
    case partColumn:
      return ShownPart(line);
    case textColumn:
      return ShownText(line.text);
    default:
      return line.count > 1 ? QString::number(line.count) : QString();
  }
}

QString CMessageModel::Text(int row) const {
  QStringList fields;
  for (int column = 0; column < columns; ++column) fields << Field(Line(row), column);
  if (Line(row).count > 1) fields << "until " + LongTime(Line(row).last);
  return fields.join('\t');
}

QString CMessageModel::Details(int row) const {
  const CLoggedMessage& line = Line(row);
  QString times = LongTime(line.first);
  if (line.count > 1)
    times = QString("%1 times, from %2 to %3").arg(line.count).arg(times, LongTime(line.last));
  return (line.part.empty() ? QString() : ShownPart(line) + ": ") + ShownText(line.text) + '\n' + times +
         ", said by: " + ShownText(line.source);
}

// The times are made last and only for a word that can be a part of one, since they take long.
bool CMessageModel::HasWords(int row, const QStringList& words) const {
  const CLoggedMessage& line = Line(row);
  const QString text =
      Field(line, severityColumn) + '\t' + Field(line, partColumn) + '\t' + Field(line, textColumn);
  return std::all_of(words.begin(), words.end(), [&](const QString& word) {
    if (text.contains(word, Qt::CaseInsensitive)) return true;
    const bool canBeTime = std::any_of(word.begin(), word.end(), [](QChar c) { return c.isDigit(); });
    return canBeTime && Text(row).contains(word);
  });
}

int CMessageModel::Find(const QStringList& words, int start, int step) const {
  const int rows = rowCount();
  for (int i = 0; i < rows; ++i) {
    const int row = ((start + i * step) % rows + rows) % rows;
    if (HasWords(row, words)) return row;
  }
  return -1;
}

int CMessageModel::rowCount(const QModelIndex& parent) const {
  return parent.isValid() ? 0 : static_cast<int>(m_rows.size());
}

int CMessageModel::columnCount(const QModelIndex& parent) const { return parent.isValid() ? 0 : columns; }

QVariant CMessageModel::data(const QModelIndex& index, int role) const {
  if (!index.isValid() || index.row() >= rowCount()) return {};
  const CLoggedMessage& line = Line(index.row());
  switch (role) {
    case Qt::DisplayRole:
      return Field(line, index.column());
    case Qt::ToolTipRole:
      return Details(index.row());
    case Qt::ForegroundRole:
      return index.column() == severityColumn ? ColourOf(line) : QVariant();
    case Qt::DecorationRole:
      return index.column() == severityColumn ? QApplication::style()->standardIcon(LookOf(line).sign)
                                              : QVariant();
    case Qt::TextAlignmentRole:
      return index.column() == countColumn ? QVariant(Qt::AlignRight | Qt::AlignVCenter) : QVariant();
    default:
      return {};
  }
}

QVariant CMessageModel::headerData(int section, Qt::Orientation orientation, int role) const {
  constexpr const char* kHeads[] = {"Time", "Severity", "Part", "Text", "Count"};
  if (role != Qt::DisplayRole || orientation != Qt::Horizontal || section < 0 || section >= columns)
    return {};
  return kHeads[section];
}

}  // namespace vastra
