#include <android/log.h>
#include <sys/system_properties.h>

#include <cstdarg>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include "platform/errno_kept.h"

int __android_log_print(int priority, const char* tag, const char* format, ...) {
    constexpr char kLetters[] = "??VDIWEF";
    const tarn::ErrnoKept errnoKept;
    char text[1024];
    va_list arguments;
    va_start(arguments, format);
    std::vsnprintf(text, sizeof text, format, arguments);
    va_end(arguments);
    const char letter = priority >= 0 && priority < 8 ? kLetters[priority] : '?';
    return std::fprintf(stderr, "%c/%s: %s\n", letter, tag, text);
}

int __system_property_get(const char* name, char* value) {
    const bool known = std::strcmp(name, "persist.log.tag.tarn.verbose") == 0;
    const char* text = known ? std::getenv("TARN_VERBOSE") : nullptr;
    const size_t length = text ? strnlen(text, PROP_VALUE_MAX - 1) : 0;
    if (length > 0) std::memcpy(value, text, length);
    value[length] = '\0';
    return static_cast<int>(length);
}
