// CWorkspace: the windows that were open for a configuration, with their states, in the settings of the user.
// A window joins with Add; the main window calls Save before a configuration is left and Open after it was
// opened.
#pragma once

#include <QJsonObject>

#include <functional>
#include <optional>
#include <vector>

#include "host/desktop/settings.h"

class QHeaderView;
class QWidget;

namespace vastra {

// The state of a window is a string of its own, such as an object of JSON with its place and choices.
struct CWorkspaceWindow {
  const char* name;                                // in the settings
  std::function<std::optional<CString>()> state;   // none: the window is not open
  std::function<void(const CString& state)> open;  // can be open already
  std::function<void()> close;
};

class CWorkspace {
 public:
  explicit CWorkspace(CSettings& settings) : m_settings(settings) {}

  void Add(CWorkspaceWindow window) { m_windows.push_back(std::move(window)); }
  // Stores what is open for the configuration at path, in place of the oldest one if there are many.
  void Save(const CString& path);
  // Opens what was open, in the order of Add, and closes the other windows. False: nothing is stored for
  // path, and the windows stay as they are.
  bool Open(const CString& path);

  static constexpr int kMost = 20;  // configurations

 private:
  QJsonObject Stored(int slot) const;

  CSettings& m_settings;
  std::vector<CWorkspaceWindow> m_windows;
};

// The state of a window as an object, and back. What is not an object has no fields.
CString StateText(const QJsonObject& fields);
QJsonObject StateFields(const CString& state);
// Bytes of the toolkit, such as the place of a window, in such an object.
QString BytesField(const QByteArray& bytes);
QByteArray FieldBytes(const QJsonValue& field);
// The state of a window with a table: its place, the columns, and choices of its own. Back: returns the
// fields, for the choices.
CString TableState(const QWidget& window, const QHeaderView& columns, QJsonObject choices);
QJsonObject UseTableState(const CString& state, QWidget& window, QHeaderView& columns);

}  // namespace vastra
