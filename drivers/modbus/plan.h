// The requests of a transfer, planned once when a node is opened.
#pragma once

#include <vector>

#include "values.h"

namespace modbus {

// A value within a request.
struct CPlace {
  int index;  // among the values of the node
  CValue value;
};

// Neighbours of one kind, from address first on, count of them.
struct CRequest {
  const CKind* kind;
  int first;
  int count;
  std::vector<CPlace> places;
};

// Limits of one request.
struct CLimits {
  int registers;  // in one request; bits: sixteen times as many
  bool single;    // one request for each value
};

// As few requests as the limits allow, in any order of the values. Gaps of up to eight addresses are read and
// ignored. No value is split.
std::vector<CRequest> PlanReads(const std::vector<CValue>& values, const CLimits& limits);
// The same for writing: in the order of values, and only true neighbours together.
std::vector<CRequest> PlanWrites(const std::vector<CValue>& values, const CLimits& limits);

}  // namespace modbus
