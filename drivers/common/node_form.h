// The dialog of a driver module: a form that the host shows for the settings of a node, made from a table.
#pragma once

#include <span>
#include <string>

#include "vastra/plc/driver_api.h"

namespace driver {

struct CChoice {
  int value;
  const char* words;
};

// One setting. Its help begins with the name of the setting, which messages use, too.
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
  int id;                                            // the driver's
  const char* title;                                 // its name
  std::span<const CField> fields;                    // from top to bottom
  DriverRecord newNode;                              // the settings of a new node
  std::string (*check)(const DriverRecord& record);  // the reason why Open would refuse them, or empty
};

// The one form of the module, which defines it.
extern const CNodeForm kNodeForm;

// Any thread. The other functions are only called by the windows, on their thread.
void SetHost(const DriverHost* host);

// The slots of the table. They do not change a setting that has no field.
int ShowConfig(int isNew);
DriverRecord GetConfig();
void SetConfig(DriverRecord config);

}  // namespace driver
