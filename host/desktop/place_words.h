// CPlaceWords: what messages call the places of a configuration, in the words of its forms: output "Kiln",
// Maximum number of logs stored, instead of outputs[1].maxLogs.
#pragma once

#include <functional>
#include <vector>

#include "host/common/configuration.h"

namespace vastra {

class CPlaceWords {
 public:
  // The caption of a field of a driver, such as "text2", in the form of the driver with this ID; empty: not
  // known.
  using CDriverCaption = std::function<CString(int plcType, const CString& field)>;

  explicit CPlaceWords(const CConfiguration& configuration, CDriverCaption driverCaption = {});

  // The words for key, or key itself if no form has it. A name in quotes after it, as messages have it in
  // outputs[1] "All", is that of the entry.
  CString Place(const CString& key) const;
  // A message in which keys and names of settings are those of the forms.
  CString Text(const CString& text) const;

  // A message about a key, in two parts.
  struct CFault {
    CString place, text;
    CString Line() const { return place.IsEmpty() ? text : place + ": " + text; }
  };
  CFault Fault(const CString& key, const CString& text) const;
  // The same for a line "KEY: TEXT". A line without a key has no place.
  CFault Fault(const CString& line) const;
  // The place of an equation, number from 1.
  CString Equation(const CString& key, int number) const;

 private:
  struct CEntry {
    CString name;
    int plcType = 0;
  };
  struct CParts;

  CParts Split(const CString& key) const;
  CString Called(const CParts& parts) const;
  const CEntry* EntryOf(const CParts& parts) const;

  const CDriverCaption m_driverCaption;
  std::vector<CEntry> m_entries[4];  // of the lists: nodes, outputs, summaries, written nodes
};

}  // namespace vastra
