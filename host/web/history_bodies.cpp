#include "host/web/history_bodies.h"

#include <fcntl.h>

#include <algorithm>

#include "host/common/column_names.h"
#include "vastra/history/csv_table.h"
#include "vastra/history/export_rows.h"
#include "vastra/logfiles/csv_format.h"
#include "vastra/logfiles/probed_file.h"

namespace vastra {
namespace {

constexpr std::size_t kPieceBytes = std::size_t{32} << 10;

class CFileBody final : public CWebBody {
 public:
  explicit CFileBody(const CString& path) : m_file(path, O_NOFOLLOW) {}

  const CProbedFile& File() const { return m_file; }
  std::optional<std::uint64_t> Size() const override { return m_file.Size(); }
  bool Next(std::string& piece) override {
    const std::uint64_t left = m_file.Size() - m_place;
    piece.resize(static_cast<std::size_t>(std::min<std::uint64_t>(left, kPieceBytes)));
    if (piece.empty() || m_isCut) return false;
    m_isCut = !m_file.Read(piece.data(), piece.size(), m_place);
    m_place += piece.size();
    return !m_isCut;
  }
  bool IsIncomplete() const override { return m_isCut; }

 private:
  CProbedFile m_file;
  std::uint64_t m_place = 0;
  bool m_isCut = false;
};

class CLogCsvBody final : public CWebBody {
 public:
  explicit CLogCsvBody(const CHistoryLog& log) : m_logs{log}, m_reader(m_logs, {}) {
    CStringArray names;
    for (const CString& name : *log.names) names.Add(name);
    m_text.AddNames(names);
  }

  bool Next(std::string& piece) override {
    CHistoryRow row;
    while (m_text.View().size() < kPieceBytes && m_reader.Next(row))
      m_text.AddSample({row.time, row.values, row.count});
    piece = m_text.View();
    m_text.RemoveAll();
    return !piece.empty();
  }
  bool IsIncomplete() const override { return !m_reader.Faults().empty(); }

 private:
  const std::vector<CHistoryLog> m_logs;
  CRowReader m_reader;
  CCsvText m_text;
};

// Collects what a table writes until it is sent.
class CPieceFile final : public CFile {
 public:
  void Write(const void* bytes, std::size_t count) override {
    m_bytes.append(static_cast<const char*>(bytes), count);
  }
  bool IsEmpty() const { return m_bytes.empty(); }
  std::string Take() { return std::exchange(m_bytes, {}); }

 private:
  std::string m_bytes;
};

std::vector<CString> CsvColumns(const std::vector<CString>& names) {
  std::vector<CString> changed;
  return TableNames(names, EColumnNames::bytes, changed);
}

class CRowsCsvBody final : public CWebBody {
 public:
  CRowsCsvBody(CSharedLogs logs, const CExportRequest& request)
      : m_logs(std::move(logs)),
        m_table(m_file, ETimeForm::local, kPieceBytes),
        m_rows(*m_logs, request, CsvColumns, m_table) {}

  bool Next(std::string& piece) override {
    while (m_file.IsEmpty() && !m_hasEnded)
      if (!m_rows.Next()) {
        m_table.End();
        m_hasEnded = true;
      }
    piece = m_file.Take();
    return !piece.empty();
  }
  bool IsIncomplete() const override { return !m_rows.Reader().Faults().empty(); }

 private:
  const CSharedLogs m_logs;
  CPieceFile m_file;
  CCsvTable m_table;
  CRowExport m_rows;
  bool m_hasEnded = false;
};

}  // namespace

std::unique_ptr<CWebBody> FileBody(const CHistoryLog& log, std::string& fault) {
  auto body = std::make_unique<CFileBody>(log.path);
  if (body->File().IsOpen()) return body;
  fault = body->File().Fault().Std();
  return nullptr;
}

std::unique_ptr<CWebBody> LogCsvBody(const CHistoryLog& log) { return std::make_unique<CLogCsvBody>(log); }

std::unique_ptr<CWebBody> RowsCsvBody(CSharedLogs logs, const CMomentRange& range,
                                      std::vector<CString> variables) {
  return std::make_unique<CRowsCsvBody>(std::move(logs),
                                        CExportRequest{.range = range, .variables = std::move(variables)});
}

}  // namespace vastra
