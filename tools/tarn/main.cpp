// tarn: the command-line companion of the library.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <new>

#include "tools/tarn/message.h"
#include "tools/tarn/verb.h"

namespace tarn::tool {
namespace {

constexpr const Verb* kVerbs[] = {&kBin,    &kSynth,    &kConvert, &kInspect,
                                  &kVerify, &kSelftest, &kBench,   &kFormats};

constexpr int kBrokenOff = 1;
constexpr int kWrong = 2;

// Whatever an argument or a file's name holds, a complaint stays one line.
std::string OneLine(std::string text) {
    for (char& c : text) {
        if (static_cast<unsigned char>(c) < ' ') c = ' ';
    }
    return text + '\n';
}

std::string ArgumentComplaint(const CLI::App* app, const CLI::Error& error) {
    const auto used = app->get_subcommands();
    const std::string command = used.empty() ? "tarn" : "tarn " + used.front()->get_name();
    return OneLine(Text(command, ": ", error.what(), "; see ", command, " --help"));
}

// A missing or mistyped verb is worth a better answer than that one is required.
void CheckVerb(const std::string& word) {
    std::string known;
    for (const Verb* verb : kVerbs) {
        if (word == verb->name) return;
        known += Text(known.empty() ? "" : ", ", verb->name);
    }
    throw UserError(Text(word.empty() ? "no verb is given" : Text("there is no verb \"", word, '"'),
                         "; there are ", known, "; see tarn --help"));
}

// A file of ours must not become standard output or error because these were closed. What takes
// their place refuses every write.
void OccupyStandardFiles() {
    for (int file = STDIN_FILENO; file <= STDERR_FILENO; ++file) {
        if (fcntl(file, F_GETFD) == -1 && open("/dev/null", O_RDONLY) != file)
            std::exit(kBrokenOff);
    }
}

int Run(int argc, char** argv) {
    if (argc < 2 || argv[1][0] != '-') CheckVerb(argc < 2 ? "" : argv[1]);
    CLI::App app("Bins packed raw frames of multi-cell colour-filter sensors.", "tarn");
    app.failure_message(ArgumentComplaint);
    app.get_formatter()->label("SUBCOMMAND", "VERB");
    app.set_version_flag("--version", TARN_VERSION);
    app.footer("tarn VERB --help tells more of each verb.");
    std::function<void()> run;
    for (const Verb* verb : kVerbs) {
        CLI::App* command = app.add_subcommand(verb->name, verb->summary)->group("Verbs");
        const std::function<void()> action = verb->declare(*command);
        command->callback([&run, action] { run = action; });
    }
    app.require_subcommand(1);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        return app.exit(error) == 0 ? 0 : kWrong;  // its own codes are above 100
    }
    run();
    return 0;
}

int Complain(int exitCode, const std::string& reason) {
    std::cerr << OneLine("tarn: " + reason) << std::flush;
    return exitCode;
}

}  // namespace
}  // namespace tarn::tool

int main(int argc, char** argv) {
    using namespace tarn::tool;
    OccupyStandardFiles();
    std::signal(SIGPIPE, SIG_IGN);  // a closed pipe is an error of the write that meets it
    try {
        return Run(argc, argv);
    } catch (const UserError& error) {
        return Complain(kWrong, error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        return Complain(kWrong, Text(error.path1().string(), ": ", error.code().message()));
    } catch (const std::bad_alloc&) {
        return Complain(kBrokenOff, "there is not enough memory for a frame of this size");
    } catch (const std::exception& error) {
        return Complain(kBrokenOff, error.what());
    }
}
