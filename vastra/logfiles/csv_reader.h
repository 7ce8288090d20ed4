// Reads a text log back, so that a start can go on with one that was not full.
#pragma once

#include "vastra/logfiles/csv_format.h"

namespace vastra {

// Reads the text of file from its beginning, a line at a time. Returns the number of its lines after the
// first. samples gets the samples of the leading lines that are those of WriteCsv for names in the present
// time zone, to the byte; none if the first line is another one. The times have no zone. Throws
// CFileException and std::bad_alloc.
std::uint64_t ReadCsv(CFile& file, const CStringArray& names, CSampleStore& samples);

}  // namespace vastra
