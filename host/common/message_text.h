// The messages of links in words for people, who do not know the classes of links.
#pragma once

#include <string>

#include "host/run/run_observer.h"

namespace vastra {

// "Error: Kiln: read: Timeout error.": the kind, except of a Notice; where, as a node, a key or a path; what
// the driver was asked for; the text of the link. One line.
std::string MessageText(const CRunMessage& message);

// Whether the message only repeats, as the link outside of another one, that the inner one has failed.
bool AddsNothing(const CRunMessage& message);

}  // namespace vastra
