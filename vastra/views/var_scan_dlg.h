// CVarScanDlg: the scan grid, a window that shows the present values of variables that the user has chosen.
//
//   CVarScanDlg* grid = nullptr;  // the host's variable: the window sets it to null when it goes
//   grid = new CVarScanDlg;
//   grid->SetInputPointers(&input, &trendings, &grid);
//   grid->SetTrendPointer(&trend);  // the host's variable for the trend window
//   if (grid->Create()) grid->ShowWindow(SW_SHOW);
//   ...
//   if (grid) grid->Refresh();  // once per scan
//
// The window frees itself. Only the application's thread calls it.
#pragma once

#include "vastra/screens/grid_wnd.h"
#include "vastra/views/live_view.h"

namespace vastra {

class CTrendingDlg;

class VASTRA_API CVarScanDlg : public CLiveView {
 public:
  CVarScanDlg();

  void SetInputPointers(CLogInput* input, CLogTrendings* trendings, CVarScanDlg** self);
  void SetTrendPointer(CTrendingDlg** trend) { m_ppTrend = trend; }  // may be null, or point at null

  // Takes the newest sample; shows it unless the user has frozen the window.
  void Refresh();

 protected:
  void OnInitDialog() override;
  void PostNcDestroy() override;
  void OnIndexed() override;
  void RedrawAll() override { m_grid.Redraw(); }
  CLiveView* Sibling() const override;

 private:
  void OnEditVars();
  void OnLoadGrid();
  void OnSaveGrid();

  CVarScanDlg** m_ppSelf = nullptr;
  CTrendingDlg** m_ppTrend = nullptr;
  CArray<float, float> m_values;  // shown, one per row
  CGridWnd m_grid;                // reads m_selected and m_values whenever it paints
};

}  // namespace vastra
