// On a host, a program that exports the platform's log function takes the library's own one's
// place. The linker must be told to export it (here
// -Wl,--export-dynamic-symbol=__android_log_print).
#include <TarnSolution.h>

#include <cstdarg>
#include <cstdio>

static int linesSeen = 0;

extern "C" __attribute__((visibility("default"))) int __android_log_print(int priority,
                                                                          const char* tag,
                                                                          const char* format, ...) {
    ++linesSeen;
    va_list arguments;
    va_start(arguments, format);
    std::printf("[%d] %s: ", priority, tag);
    std::vprintf(format, arguments);
    std::printf("\n");
    va_end(arguments);
    return 0;
}

int main() {
    TarnSolution solution;
    solution.Init(0);  // one line of information, whatever the verbosity
    return linesSeen == 1 ? 0 : 1;
}
