// CDocument: the configuration that the desktop works on, and the file it came from.
#pragma once

#include "host/common/configuration.h"
#include "host/common/stage_names.h"

namespace vastra {

class CDocument {
 public:
  CDocument();

  // Begins an empty configuration, which has no file yet.
  void New();
  // Reads either form of a configuration: an empty text, or one line that says what is wrong, with the path
  // in front; the document is then as it was.
  CString Open(const CString& path);
  // Writes it: a path that ends with ".json" gets JSON, any other the configuration file. As Open.
  CString Save(const CString& path);

  // A line for each setting that the file at Path does not hold, since its form has no place for it.
  CStringArray Lost();
  // A line for each setting that a file at path would not hold, but would in the newest version; then
  // UseNewestVersion makes it that of the document.
  CStringArray LostToVersion(const CString& path);
  void UseNewestVersion() { m_configuration.m_version = kVersionNewest; }

  bool IsOpen() const { return m_open; }
  const CString& Path() const { return m_path; }  // empty: it has no file yet
  CString Title() const { return m_path.IsEmpty() ? "Untitled" : m_path; }
  CConfiguration& Configuration() { return m_configuration; }
  bool IsChanged() const { return m_changed; }

  // The configuration as it is stored: with the base variables that the file has, in place of those that the
  // host has set.
  CConfiguration Stored() const;
  // The views have changed the settings of the trending stage, which are those of the configuration.
  void TrendChanged() { m_changed = true; }
  // Takes what the user has made of the configuration: whether that is another one. Relative paths that were
  // typed are taken from the folder of the file; without a file, from where the program was started.
  bool Take(CConfiguration edited);
  // Sets the base variables that are stored, unless the file has none.
  void TakeBaseVars(const CStringArray& names);

 private:
  CString m_startFolder;
  CConfiguration m_configuration;
  CStringArray m_storedBaseVars;
  CString m_path;  // full
  bool m_open = false;
  bool m_changed = false;
};

}  // namespace vastra
