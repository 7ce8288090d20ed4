// A window with the text report of a configuration, which can be copied and saved.
#pragma once

#include <QDialog>

#include "vastra/platform/string.h"

namespace vastra {

class CReportWindow : public QDialog {
 public:
  // text: the report, with "\r\n" as line end.
  CReportWindow(CString text, QWidget* parent);

 private:
  void Save();
  void Copy();

  const CString m_text;
};

}  // namespace vastra
