// The settings of a driver module as a table: the form that the host shows for a node, and the exports that
// answer questions about its settings.
#pragma once

#include <span>
#include <string>

#include "vastra/plc/driver_api.h"

namespace driver {

struct CChoice {
  int value;
  const char* words;
};

// One setting. Its help begins with the name of the setting, which messages use, too; the windows do not show
// that name, and begin the rest with a capital letter.
struct CField {
  constexpr CField(const char* fieldName, const char* fieldHelp, const char* DriverRecord::*member)
      : name(fieldName), help(fieldHelp), kind(driverFieldText), text(member) {}
  constexpr CField(const char* fieldName, const char* fieldHelp, int DriverRecord::*member, int lowest,
                   int highest)
      : name(fieldName),
        help(fieldHelp),
        kind(driverFieldNumber),
        number(member),
        low(lowest),
        high(highest) {}
  // A value that is not in all becomes one more choice for the node that has it: otherWord and the number.
  constexpr CField(const char* fieldName, const char* fieldHelp, int DriverRecord::*member,
                   std::span<const CChoice> all, const char* otherWord)
      : name(fieldName),
        help(fieldHelp),
        kind(driverFieldChoice),
        number(member),
        choices(all),
        other(otherWord) {}

  const char* name;
  const char* help;
  int kind;  // driverField...
  const char* DriverRecord::*text = nullptr;
  int DriverRecord::*number = nullptr;  // of a choice, too
  int low = 0;
  int high = 0;
  std::span<const CChoice> choices;
  const char* other = nullptr;
};

struct CNodeForm {
  int id;                          // the driver's
  const char* title;               // its name
  std::span<const CField> fields;  // from top to bottom
  DriverRecord newNode;            // the settings of a new node
  // The reason why Open would refuse the settings, or empty. variableCount 0: not known yet.
  std::string (*check)(const DriverRecord& record);
  // The line that the node shares with others, or empty. Null: each node has its own.
  std::string (*line)(const DriverRecord& record) = nullptr;
};

// The one form of the module, which defines it.
extern const CNodeForm kNodeForm;

// Any thread. The slots are only called by the windows, on their thread.
void SetHost(const DriverHost* host);
const char* CheckConfig(const DriverRecord& config);
const char* GetLine(const DriverRecord& config);

// The slots of the table. They do not change a setting that has no field.
int ShowConfig(int isNew);
DriverRecord GetConfig();
void SetConfig(DriverRecord config);

}  // namespace driver
