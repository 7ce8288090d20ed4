// CDocument: the configuration that the desktop edits and runs, and its file.
#pragma once

#include "host/common/configuration.h"
#include "host/common/stage_names.h"

namespace vastra {

class CDocument {
 public:
  CDocument();

  // Starts an empty configuration without a file.
  void New();
  // Reads either form of a configuration. Returns an empty string, or an error message that begins with the
  // path; then the document does not change.
  CString Open(const CString& path);
  // Writes the configuration: as JSON to a path that ends with ".json", otherwise as a configuration file.
  // Returns the same as Open.
  CString Save(const CString& path);

  // A line for each setting that the form of the file at Path cannot hold.
  CStringArray Lost();
  // A line for each setting that a file at path cannot hold in the version of the document, but can in the
  // newest version. UseNewestVersion changes the document to that version.
  CStringArray LostToVersion(const CString& path);
  void UseNewestVersion() { m_configuration.m_version = kVersionNewest; }

  bool IsOpen() const { return m_open; }
  const CString& Path() const { return m_path; }  // empty: no file yet
  CString Title() const { return m_path.IsEmpty() ? "Untitled" : m_path; }
  CConfiguration& Configuration() { return m_configuration; }
  bool IsChanged() const { return m_changed; }
  CString Folder() const;  // of the file; without one the start folder of the program

  // The configuration as Save writes it: with the base variables of the file in place of those that the host
  // has set.
  CConfiguration Stored() const;
  // The same for a run: relative log folders begin in the start folder of the program.
  CConfiguration ForRun() const;
  // The views have changed the settings of the trending stage, which are those of the configuration.
  void TrendChanged() { m_changed = true; }
  // Replaces the configuration with the one that the user has edited. Returns whether it differs. New
  // relative paths are relative to the folder of the file; without a file they stay relative until Save.
  bool Take(CConfiguration edited);
  // Sets the base variables that are stored, unless the file has none.
  void TakeBaseVars(const CStringArray& names);

 private:
  CString m_startFolder;
  CConfiguration m_configuration;
  CStringArray m_storedBaseVars;
  CString m_path;  // absolute
  bool m_open = false;
  bool m_changed = false;
};

}  // namespace vastra
