// What the user can do with a chart by keys and in its menus: one table for the keys, the menus and the help.
#pragma once

#include <QList>

class QAction;

namespace vastra {

class CChartView;

enum class EChartMenu { view, values, cursors, curves };

struct CChartCommand {
  EChartMenu menu;
  QAction* action;
};

// Makes an action for each command. The keys work while view has the focus. The actions belong to view.
QList<CChartCommand> MakeChartCommands(CChartView& view);
// Enables the commands that the state of view allows, and sets their marks.
void UpdateChartCommands(const QList<CChartCommand>& commands, const CChartView& view);

}  // namespace vastra
