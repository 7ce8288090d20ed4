// What the pages that keep PLC nodes do with them alike. list shows the names of nodes, in their order.
#pragma once

#include "vastra/config/plc_node_config.h"
#include "vastra/ui/controls.h"

namespace vastra {

class CDriverTypeDlg;

using CPlcNodes = COwnedList<CPlcNodeConfig>;

void ShowNodes(CListBox& list, const CPlcNodes& nodes);

// dialog is as the page makes it; the node is put in here. Without OK nothing changes.
void AddNode(CDriverTypeDlg& dialog, CListBox& list, CPlcNodes& nodes);
// The marked node; the user is told if there is none.
void EditNode(CDriverTypeDlg& dialog, CListBox& list, CPlcNodes& nodes);

// All nodes with the name that is marked.
void DeleteNode(CListBox& list, CPlcNodes& nodes);

}  // namespace vastra
