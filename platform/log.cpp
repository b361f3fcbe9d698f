#include "platform/log.h"

#include <sys/system_properties.h>

#include <cstdlib>

namespace tarn {

Verbosity ReadVerbosity() {
    char text[PROP_VALUE_MAX] = {};
    const int length = __system_property_get("persist.log.tag.tarn.verbose", text);
    return {length, std::atoi(text)};
}

bool VerboseCheck() {
    return ReadVerbosity().value != 0;
}

}  // namespace tarn
