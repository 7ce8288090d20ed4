#include "host/desktop/workspace.h"

#include <QHeaderView>
#include <QJsonDocument>
#include <QWidget>

#include <algorithm>

#include "vastra/ui/text.h"

namespace vastra {
namespace {

// The fields of a stored workspace. "used" grows with each Save: the lowest one is the oldest.
constexpr const char *kPath = "path", *kUsed = "used", *kWindows = "windows";

CString SlotKey(int slot) { return "Workspace" + CString(std::to_string(slot)); }

}  // namespace

QJsonObject CWorkspace::Stored(int slot) const { return StateFields(m_settings.Get(SlotKey(slot))); }

void CWorkspace::Save(const CString& path) {
  int slot = -1;
  double oldest = 0, newest = 0;
  for (int i = 0; i < kMost; ++i) {
    const QJsonObject stored = Stored(i);
    const double used = stored[kUsed].toDouble();
    newest = std::max(newest, used);
    const bool isOwn = stored[kPath].toString() == ToScreen(path);
    if (slot < 0 || isOwn || used < oldest) slot = i, oldest = isOwn ? -1 : used;
  }
  QJsonObject windows;
  for (const CWorkspaceWindow& window : m_windows)
    if (const auto state = window.state()) windows[window.name] = ToScreen(*state);
  m_settings.Set(SlotKey(slot),
                 StateText({{kPath, ToScreen(path)}, {kUsed, newest + 1}, {kWindows, windows}}));
}

bool CWorkspace::Open(const CString& path) {
  for (int i = 0; i < kMost; ++i) {
    const QJsonObject stored = Stored(i);
    if (stored[kPath].toString() != ToScreen(path)) continue;
    const QJsonObject windows = stored[kWindows].toObject();
    for (const CWorkspaceWindow& window : m_windows) {
      if (const QJsonValue state = windows[window.name]; state.isString())
        window.open(FromScreen(state.toString()));
      else
        window.close();
    }
    return true;
  }
  return false;
}

CString StateText(const QJsonObject& fields) {
  return FromScreen(QString(QJsonDocument(fields).toJson(QJsonDocument::Compact)));
}

QJsonObject StateFields(const CString& state) {
  return QJsonDocument::fromJson(ToScreen(state).toUtf8()).object();
}

QString BytesField(const QByteArray& bytes) { return bytes.toBase64(); }

QByteArray FieldBytes(const QJsonValue& field) { return QByteArray::fromBase64(field.toString().toLatin1()); }

CString TableState(const QWidget& window, const QHeaderView& columns, QJsonObject choices) {
  choices["place"] = BytesField(window.saveGeometry());
  choices["columns"] = BytesField(columns.saveState());
  return StateText(choices);
}

QJsonObject UseTableState(const CString& state, QWidget& window, QHeaderView& columns) {
  QJsonObject fields = StateFields(state);
  window.restoreGeometry(FieldBytes(fields["place"]));
  columns.restoreState(FieldBytes(fields["columns"]));
  return fields;
}

}  // namespace vastra
