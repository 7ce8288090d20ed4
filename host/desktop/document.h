// CDocument: the configuration that the desktop works on, and the file it came from.
#pragma once

#include "host/common/configuration.h"
#include "host/common/stage_names.h"

namespace vastra {

class CDocument {
 public:
  // Reads either form of a configuration: an empty text, or one line that says what is wrong, with the path
  // in front; the document is then as it was.
  CString Open(const CString& path);
  // Writes it: a path that ends with ".json" gets JSON, any other the configuration file. As Open.
  CString Save(const CString& path);

  // A line for each setting that the file at Path does not hold, since its form has no place for it.
  CStringArray Lost();

  bool IsOpen() const { return !m_path.IsEmpty(); }
  const CString& Path() const { return m_path; }
  CConfiguration& Configuration() { return m_configuration; }
  bool IsChanged() const { return m_changed; }

  // Takes what the views have changed in the trending stage.
  void TakeTrend(const CTrendConfig& trend);

 private:
  CConfiguration m_configuration;
  CString m_path;  // full; empty: nothing is open
  bool m_changed = false;
};

}  // namespace vastra
