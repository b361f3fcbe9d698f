// Stands in for the platform's header of the same name on hosts that are not Android.
#ifndef TARN_PLATFORM_HOST_ANDROID_LOG_H_
#define TARN_PLATFORM_HOST_ANDROID_LOG_H_

enum { ANDROID_LOG_DEBUG = 3, ANDROID_LOG_INFO = 4, ANDROID_LOG_ERROR = 6 };

// Writes "P/tag: text" and a newline to standard error; P is the priority's letter. Exported, and
// called through the dynamic symbol table: a program that exports its own takes this one's place.
extern "C" __attribute__((visibility("default"), format(printf, 3, 4))) int __android_log_print(
    int priority, const char* tag, const char* format, ...);

#endif  // TARN_PLATFORM_HOST_ANDROID_LOG_H_
