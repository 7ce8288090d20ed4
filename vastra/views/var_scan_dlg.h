// CVarScanDlg: the scan grid, a window with the present values of the selected variables.
//
//   CVarScanDlg* grid = nullptr;  // of the host: the window sets it to null when it is destroyed
//   grid = new CVarScanDlg;
//   grid->SetInputPointers(&input, &trendings, &grid);
//   grid->SetTrendPointer(&trend);  // the pointer of the host to the trend window
//   if (grid->Create()) grid->ShowWindow(SW_SHOW);
//   ...
//   if (grid) grid->Refresh();  // once per scan
//
// The window deletes itself. Only the thread of the application calls it.
#pragma once

#include "vastra/screens/grid_wnd.h"
#include "vastra/views/live_view.h"

namespace vastra {

class CTrendingDlg;

class VASTRA_API CVarScanDlg : public CLiveView {
 public:
  CVarScanDlg();

  void SetInputPointers(CLogInput* input, CLogTrendings* trendings, CVarScanDlg** self);
  void SetTrendPointer(CTrendingDlg** trend) { m_ppTrend = trend; }  // can be null or point to null

  // Reads the newest sample, and shows it unless the window is frozen.
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
  CGridWnd m_grid;                // reads m_selected and m_values to paint
};

}  // namespace vastra
