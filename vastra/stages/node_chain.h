// The links of one PLC node, the same for reading and for writing.
#pragma once

#include "vastra/config/plc_node_config.h"
#include "vastra/plc/node_link.h"
#include "vastra/stages/chain.h"

namespace vastra {

// Adds the links of node to a chain without a head: the driver's link, a namer, a scaler.
//   driver     index of the node's driver in CDriverFactory
//   useDriver  0: the chain is only asked for its names and no PLC is contacted
// 1, or 0 if the driver's module cannot be loaded.
int AddNode(CChain& chain, const CPlcNodeConfig& node, int driver, int useDriver);

// The same inside a CNodeLink, which is the head then. group: null if the chain is only asked for its names.
int AddGuardedNode(CChain& chain, const CPlcNodeConfig& node, int driver,
                   const std::shared_ptr<CNodeGroup>& group);
// The same for a node that is written, with a mapper from names between the CNodeLink and the others. Values
// that are not finite are not written.
int AddGuardedWrite(CChain& chain, const CPlcNodeConfig& node, int driver, const CStringArray& names,
                    const std::shared_ptr<CNodeGroup>& group);

}  // namespace vastra
