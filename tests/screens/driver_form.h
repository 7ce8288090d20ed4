// A driver module's form for the tests of its rules and of its dialog.
#pragma once

#include <cstring>
#include <string>

#include "vastra/plc/driver_api.h"

namespace vastra {

struct CModule {
  // The values of the module, and whether its text buffer was overrun.
  std::string State() const {
    return std::to_string(fields[0].number) + "|" + std::string(text, strnlen(text, 8)) + "|" +
           std::to_string(fields[2].number) + (text[8] == '#' ? "" : " overrun");
  }
  char text[9] = {'a', 'b', 'c', 0, 0, 0, 0, 0, '#'};
  const char* choices[2] = {"slow", "fast"};
  DriverField fields[3] = {
      {"Period", "How long.", driverFieldNumber, -5, 100, nullptr, 0, 5, nullptr, 0},
      {"Name", "What for.", driverFieldText, 0, 0, nullptr, 0, 0, text, 8},
      {"Mode", nullptr, driverFieldChoice, 0, 0, choices, 2, 1, nullptr, 0},
  };
  DriverForm form = {"Pump", fields, 3, nullptr, nullptr};
};

}  // namespace vastra
