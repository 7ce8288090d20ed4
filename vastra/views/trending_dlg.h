// CTrendingDlg: the trend window, which plots the selected variables. A curve has one point for each of the
// last refreshes, the newest at the right.
//
//   CTrendingDlg* trend = nullptr;  // of the host: the window sets it to null when it is destroyed
//   trend = new CTrendingDlg;
//   trend->SetInputPointers(&input, &trendings, &trend);
//   trend->SetGridPointer(&grid);  // the pointer of the host to the scan grid
//   trend->SetTimeScan(1000);
//   if (trend->Create()) trend->ShowWindow(SW_SHOW);
//   ...
//   if (trend) trend->Refresh();  // once per scan
//
// The window deletes itself. Only the thread of the application calls it.
#pragma once

#include "vastra/views/live_view.h"
#include "vastra/views/trend_parts.h"

namespace vastra {

class CVarScanDlg;

class VASTRA_API CTrendingDlg : public CLiveView {
  DECLARE_DYNAMIC(CTrendingDlg)
 public:
  CTrendingDlg();
  ~CTrendingDlg() override;

  void SetInputPointers(CLogInput* input, CLogTrendings* trendings, CTrendingDlg** self);
  void SetGridPointer(CVarScanDlg** grid) { m_ppGrid = grid; }  // can be null or point to null
  // Milliseconds between two calls of Refresh. Before Create.
  void SetTimeScan(UINT timeScan) { m_timeScan = timeScan; }
  // The same for an open window: all curves start again.
  void RefreshTimeScan(UINT timeScan);

  // Adds a point of the newest sample to each curve, and shows it unless the window is frozen.
  void Refresh();

 protected:
  void OnInitDialog() override;
  void PostNcDestroy() override;
  void OnSize(int cx, int cy) override;
  bool OnPaint(const CRect& dirty) override;
  bool OnLButtonUp(CPoint point) override;
  bool OnLButtonDblClk(CPoint point) override;
  bool OnRButtonDown(CPoint point) override;
  bool OnKeyDown(UINT key) override;
  void OnNamesLost() override { CreateVariables(); }
  void OnNamesReset() override;
  void RedrawAll() override { Invalidate(); }
  CLiveView* Sibling() const override;

 private:
  void OnEditTrendingVars();
  void OnFreezeTrending();
  void OnReadButton();
  void OnWriteButton();
  void ShowSelection(const CTrendSelection& selection);
  void ShowPopup(int item, CPoint point);
  void OnSelectVarPop() { SelectVariable(m_popupItem); }
  void OnSetScalePop() { SetScale(m_popupItem); }
  void OnColorPop();

  void CreateVariables();
  void CalcScales(int place, CVariable& variable);
  void TakeVariables(CVariableArray& variables);
  void CleanVarsArray();
  void DeleteVarsArray();
  bool CurvesAreSelected() const;

  // The curve at item; null: none. With a name: null also if the item has another variable now.
  CVariable* VariableAt(int item, const CString* name = nullptr) const;
  CVariable* VariableOf(const CString& name) const;
  int ItemOf(const CVariable* variable) const;  // -1: none
  void SelectVariable(int item);
  void SetScale(int item);

  void TakePlaces();
  int CreatePicture();
  void DrawTrendings(CDC& dc) const;
  void DrawPicture();

  CBitmap m_picture;  // of the plot
  CRect m_plot;       // its frame
  CVarScanDlg** m_ppGrid = nullptr;
  CTrendingDlg** m_ppSelf = nullptr;
  int m_popupItem = -1;  // of the legend, at the last right click
  UINT m_timeScan = 100;
  CVariableArray m_vars;  // the curves, in the order of m_selected, owned
  CLegend m_legend;
  CVertScale m_vertScale;
  CHorizScale m_horizScale;
  bool m_isOpen = false;        // OnInitDialog is done
  bool m_pictureIsNew = false;  // Refresh has just drawn it
};

}  // namespace vastra
