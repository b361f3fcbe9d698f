#include "platform/log.h"

#include <sys/system_properties.h>

#include <cstdlib>

#include "platform/errno_kept.h"

namespace tarn {

Verbosity ReadVerbosity() {
    const ErrnoKept errnoKept;  // a number of any length may stand there
    char text[PROP_VALUE_MAX] = {};
    const int length = __system_property_get("persist.log.tag.tarn.verbose", text);
    return {length, std::atoi(text)};
}

bool VerboseCheck() {
    return ReadVerbosity().value != 0;
}

}  // namespace tarn
