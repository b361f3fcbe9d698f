// What bin tells of a run.
#ifndef TARN_TOOL_VERBS_BIN_REPORT_H_
#define TARN_TOOL_VERBS_BIN_REPORT_H_

#include <string>
#include <vector>

#include "tools/tarn/verbs/bin_job.h"

namespace tarn::tool {

// The line for a person, with notes, and JSON where it is asked for. `names` are the files written.
void Report(const BinJob& job, const std::vector<std::string>& names);

// Throws UserError where some frames are missing from the result.
void TellFailures(const BinJob& job);

}  // namespace tarn::tool

#endif  // TARN_TOOL_VERBS_BIN_REPORT_H_
