// CWindows: installs modal message boxes and choosers for the engine, and keeps the windows of the program on
// the screen. A program with windows makes one object, after the application object of the toolkit, and
// destroys it before that.
#pragma once

#include <memory>

#include "vastra/platform/chooser.h"
#include "vastra/platform/prompt.h"

namespace vastra {

class CScreenFit;

class VASTRA_API CWindows {
 public:
  CWindows();
  ~CWindows();
  CWindows(const CWindows&) = delete;
  CWindows& operator=(const CWindows&) = delete;

 private:
  std::unique_ptr<CPrompter> m_prompter;
  std::unique_ptr<CChooser> m_chooser;
  std::unique_ptr<CScreenFit> m_fit;
  CPrompter* m_formerPrompter;
  CChooser* m_formerChooser;
};

// Calls routine once when the application object is destroyed, while windows can still be used.
VASTRA_API void AtApplicationEnd(void (*routine)());

}  // namespace vastra
