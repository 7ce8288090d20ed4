// Adding, editing and deleting PLC nodes for the input page and the PLC write page. list shows the names of
// nodes, in order.
#pragma once

#include "vastra/config/plc_node_config.h"
#include "vastra/ui/controls.h"

namespace vastra {

class CDriverTypeDlg;

using CPlcNodes = COwnedList<CPlcNodeConfig>;

void ShowNodes(CListBox& list, const CPlcNodes& nodes);

// Runs dialog, which the page has prepared, on a new node. Without OK nothing changes.
void AddNode(CDriverTypeDlg& dialog, CListBox& list, CPlcNodes& nodes);
// Runs dialog on the marked node; tells the user if nothing is marked.
void EditNode(CDriverTypeDlg& dialog, CListBox& list, CPlcNodes& nodes);

// Deletes all nodes with the marked name; tells the user if nothing is marked.
void DeleteNode(CListBox& list, CPlcNodes& nodes);

}  // namespace vastra
