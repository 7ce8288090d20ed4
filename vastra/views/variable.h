// CVariable: one curve of the trend window.
#pragma once

#include "vastra/platform/array.h"
#include "vastra/platform/list.h"
#include "vastra/platform/object.h"
#include "vastra/views/trend_geometry.h"

namespace vastra {

class CWnd;

class CVariable : public CObject {
 public:
  // Asks the user for the scale: 1, or 0 if it does not change.
  int SetScale(CWnd* parent);

  CScale Scale() const { return {m_min, m_max}; }
  void SetScale(CScale scale) { m_min = scale.minimum, m_max = scale.maximum; }
  // Adds a point and removes the oldest if there are too many.
  void AddPoint(float value);

  double m_max = CScale().maximum;  // the value at the top of the plot
  double m_min = CScale().minimum;  // and at its bottom
  CList<float, float> m_history;    // newest first, up to kTrendPoints
  COLORREF m_color = 0;
  CString m_name;
};

using CVariableArray = CTypedPtrArray<CObArray, CVariable*>;

}  // namespace vastra
