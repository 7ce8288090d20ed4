#include "host/cli/history/export_output.h"

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "host/cli/history/json_table.h"
#include "host/cli/history/sqlite_table.h"
#include "host/cli/output.h"
#include "host/cli/terminal/figures.h"
#include "host/cli/terminal/pace.h"
#include "host/cli/terminal/terminal.h"
#include "host/common/paths.h"
#include "host/run/inbox.h"
#include "vastra/platform/file_system.h"
#include "vastra/platform/save_file.h"

namespace vastra {
namespace {

using CFillTable = std::function<void(CRowTable&)>;

void FillText(const CExportOrder& order, CFile& file, const CFillTable& fill) {
  if (order.format == EExportFormat::jsonl) {
    CJsonTable table(file, order.time);
    return fill(table);
  }
  CCsvTable table(file, order.time);
  fill(table);
}

// The path that a new image replaces: links are followed.
CString ReplacedPath(const CString& path) {
  std::error_code failed;
  const std::filesystem::path real = std::filesystem::canonical(path.Std(), failed);
  return failed ? path : CString(real.string());
}

void SaveDatabase(const CExportOrder& order, const CFillTable& fill) {
  CString fault;
  const CSqliteLibrary* const library = CSqliteLibrary::Load(fault);
  if (!library) throw CExportStop{fault};
  CReplaceFile image(ReplacedPath(order.out->path));
  CSqliteTable table(*library, image.GetPath(), order.time);
  fill(table);
  image.Replace();
}

// Why a database cannot be written there; empty if it can.
CString TakenPlace(const CExportOrder& order) {
  if (!FileExists(order.out->path)) return {};
  const CString other = OtherThanFile(order.out->path);
  if (!other.IsEmpty()) return "not written: it is " + other;
  return order.mayReplace ? CString() : CString("not written: it exists (--force replaces it)");
}

void Save(const CExportOrder& order, const CFillTable& fill) {
  if (order.format != EExportFormat::sqlite)
    return SaveFile(order.out->path, [&](CFile& file) { FillText(order, file, fill); });
  const CString taken = TakenPlace(order);
  if (!taken.IsEmpty()) throw CExportStop{taken};
  SaveDatabase(order, fill);
}

// The error message of a file that could not be written.
CString SaveFault(const CExportOrder& order, const CFillTable& fill) {
  try {
    Save(order, fill);
    return {};
  } catch (const CFileException& fault) {
    return fault.Text();
  } catch (const CSqliteTable::CFault& fault) {
    return fault.text;
  } catch (const CExportStop& stop) {
    return stop.reason;
  }
}

bool ShowsBar(const CExportOrder& order) {
  struct stat output = {};
  const bool isFile = order.out || (::fstat(STDOUT_FILENO, &output) == 0 && S_ISREG(output.st_mode));
  return isFile && CTerminal::Instance().HasStatus();
}

}  // namespace

EExit WriteExport(const CExportOrder& order, const CFillTable& fill) {
  if (!order.out) return PrintData([&](CFile& file) { FillText(order, file, fill); });
  const CString fault = SaveFault(order, fill);
  CTerminal::Instance().EndStatus();
  return fault.IsEmpty() ? kDone : Fail(kFailed, order.out->typed, fault);
}

CExportWatch WatchExport(const CExportOrder& order, const char* work) {
  return [showsBar = ShowsBar(order), pace = CPace(), work](double part) mutable {
    if (CStopSignals::HaveCome()) throw CExportStop{"not written: a signal has ended the export"};
    if (!showsBar || !pace.IsDue()) return;
    CString text;
    text.Format("%s %3d %%  %s", Bar(static_cast<float>(part)).c_str(), static_cast<int>(part * 100), work);
    CTerminal::Instance().Status({text.Std()});
  };
}

}  // namespace vastra
