// The log tag and the verbose check that front end and engines share, over the platform's own
// calls.
#ifndef TARN_PLATFORM_LOG_H_
#define TARN_PLATFORM_LOG_H_

#include <android/log.h>

namespace tarn {

inline constexpr char kLogTag[] = "TarnSolution";

struct Verbosity {
    int length;  // of the property's text; 0 when unset or empty
    int value;   // of its leading number; 0 when there is none
};

// Reads the verbosity property, afresh at every call.
Verbosity ReadVerbosity();

// Whether a debug line is to be written now: the property's number is not zero.
bool VerboseCheck();

}  // namespace tarn

#endif  // TARN_PLATFORM_LOG_H_
