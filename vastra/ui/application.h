// CWindows: what a program with windows gives the engine: real modal boxes and real choosers. One object,
// made after the toolkit's application and gone before it.
#pragma once

#include <memory>

#include "vastra/platform/chooser.h"
#include "vastra/platform/prompt.h"

namespace vastra {

class VASTRA_API CWindows {
 public:
  CWindows();
  ~CWindows();
  CWindows(const CWindows&) = delete;
  CWindows& operator=(const CWindows&) = delete;

 private:
  std::unique_ptr<CPrompter> m_prompter;
  std::unique_ptr<CChooser> m_chooser;
  CPrompter* m_formerPrompter;
  CChooser* m_formerChooser;
};

// Calls routine when the toolkit's application goes, while windows can still be used. Asking twice is asking
// once.
VASTRA_API void AtApplicationEnd(void (*routine)());

}  // namespace vastra
