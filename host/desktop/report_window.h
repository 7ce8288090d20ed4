// The text report of a configuration in a window, to read, to copy and to save.
#pragma once

#include <QDialog>

#include "vastra/platform/string.h"

namespace vastra {

class CReportWindow : public QDialog {
 public:
  // text: the report, with "\r\n" at the ends of its lines.
  CReportWindow(CString text, QWidget* parent);

 private:
  void Save();
  void Copy();

  const CString m_text;
};

}  // namespace vastra
