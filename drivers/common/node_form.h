// The dialog of a driver module: a form of the host's for the settings of a node, made from a table.
#pragma once

#include <span>
#include <string>

#include "vastra/plc/driver_api.h"

namespace driver {

struct CChoice {
  int value;
  const char* words;
};

// One setting. Its help begins with the name that it has outside of the form, in faults too.
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
  // A value that is none of all is one more choice for the node that has it: the number behind otherWord.
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
  DriverRecord newNode;                              // the settings that one starts with
  std::string (*check)(const DriverRecord& record);  // what Open would say of them; empty: nothing
};

// The one form of the module, which defines it.
extern const CNodeForm kNodeForm;

// Any thread; the others are called by the screens alone, on theirs.
void SetHost(const DriverHost* host);

// The slots of the table. A setting that has no field goes through them untouched.
int ShowConfig(int isNew);
DriverRecord GetConfig();
void SetConfig(DriverRecord config);

}  // namespace driver
