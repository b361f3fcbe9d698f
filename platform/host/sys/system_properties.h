// Stands in for the platform's header of the same name on hosts that are not Android.
#ifndef TARN_PLATFORM_HOST_SYS_SYSTEM_PROPERTIES_H_
#define TARN_PLATFORM_HOST_SYS_SYSTEM_PROPERTIES_H_

#define PROP_VALUE_MAX 92

// Copies a property's text, cut to PROP_VALUE_MAX - 1 characters, and returns its length; an unset
// property gives an empty text and 0. The one property there is on a host,
// persist.log.tag.tarn.verbose, is the environment variable TARN_VERBOSE. Exported, and called
// through the dynamic symbol table: a program that exports its own takes this one's place.
extern "C" __attribute__((visibility("default"))) int __system_property_get(const char* name,
                                                                            char* value);

#endif  // TARN_PLATFORM_HOST_SYS_SYSTEM_PROPERTIES_H_
