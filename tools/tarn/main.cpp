// tarn: the command-line companion of the library.
#include <fcntl.h>
#include <unistd.h>

#include <csignal>
#include <filesystem>
#include <new>

#include "frames/message.h"
#include "pictures/output.h"
#include "pictures/temporary_file.h"
#include "tools/tarn/cli/completion.h"
#include "tools/tarn/cli/man_page.h"
#include "tools/tarn/cli/say.h"
#include "tools/tarn/cli/verb.h"

namespace tarn::tool {
namespace {

// In the order in which somebody with a dump wants them.
constexpr const Verb* kVerbs[] = {&kInspect, &kBin,      &kConvert, &kSynth,
                                  &kVerify,  &kSelftest, &kBench,   &kFormats};

constexpr int kBrokenOff = 1;
constexpr int kWrong = 2;

std::string ArgumentComplaint(const CLI::App* app, const CLI::Error& error) {
    const auto used = app->get_subcommands();
    const std::string command = used.empty() ? "tarn" : "tarn " + used.front()->get_name();
    return OneLine(Text(command, ": ", error.what(), "; see ", command, " --help"));
}

// A missing or mistyped verb is worth a better answer than that one is required.
void CheckVerb(const CLI::App& app, const std::string& word) {
    if (app.get_option_no_throw(word)) return;
    std::string known;
    for (const Verb* verb : kVerbs) {
        if (word == verb->name) return;
        known += Text(known.empty() ? "" : ", ", verb->name);
    }
    const char* wrong = word.starts_with('-') ? "a verb comes first, not " : "there is no verb ";
    throw UserError(Text(word.empty() ? "no verb is given" : Text(wrong, '"', word, '"'),
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

constexpr char kFooter[] =
    "Start with a dump of yours, or with one of a test chart:\n"
    "  tarn synth --chart all -o dump.raw -f qc10 --cell 2 --pitch 5120\n"
    "  tarn inspect dump.raw\n"
    "  tarn bin dump.raw -o dump.png -f qc10 -s 4000x3000 --pitch 5120 --cell 2\n"
    "\n"
    "tarn VERB --help tells more of each verb; its examples go on with this dump.\n"
    "\n"
    "Results that go to - are written to standard output, messages to standard error. A run that\n"
    "fails leaves no half file, and files that were there as they were.\n"
    "\n"
    "Exit code: 0 done; 1 the run broke off, or verify and selftest found a difference; 2 what "
    "was\n"
    "asked or given is wrong, files that cannot be read or written included.\n";

// What other programs ask, with answers out of the tree of verbs: nothing is run. Hidden from the
// help. True when it was one of these.
bool Answered(const CLI::App& app, const std::vector<std::string>& words) {
    std::string answer;
    if (words.size() == 2 && words[1] == "--man-page") {
        answer = ManPage(app);
    } else if (words.size() > 2 && words[1] == "--complete") {
        answer = Completions(app, {words.begin() + 2, words.end()});
    } else {
        return false;
    }
    WriteFile("-", Bytes(answer.begin(), answer.end()));
    return true;
}

int Run(int argc, char** argv) {
    CLI::App app(
        "From a bare packed dump of an image sensor to a picture, a DNG, a number: looks at packed "
        "raw\nframes, bins those of multi-cell colour-filter sensors, converts and checks them.",
        "tarn");
    app.failure_message(ArgumentComplaint);
    app.get_formatter()->label("SUBCOMMAND", "VERB");
    app.set_version_flag("--version", TARN_VERSION);
    app.footer(kFooter);
    std::function<void()> run;
    for (const Verb* verb : kVerbs) {
        CLI::App* command = app.add_subcommand(verb->name, verb->summary)->group("Verbs");
        const std::function<void()> action = verb->declare(*command);
        command->callback([&run, action] { run = action; });
    }
    app.require_subcommand(1);
    if (Answered(app, {argv, argv + argc})) return 0;
    CheckVerb(app, argc < 2 ? "" : argv[1]);
    try {
        app.parse(argc, argv);
    } catch (const CLI::ParseError& error) {
        if (app.exit(error) != 0) return kWrong;  // its own codes are above 100
        if (!std::cout.flush()) throw RunError("standard output: writing broke off");
        return 0;
    }
    run();
    return 0;
}

int ComplainAndExit(int exitCode, const std::string& reason) {
    Complain(reason);
    return exitCode;
}

}  // namespace
}  // namespace tarn::tool

int main(int argc, char** argv) {
    using namespace tarn::tool;
    OccupyStandardFiles();
    // A closed pipe and a file that must not grow are errors of the write that meets them.
    std::signal(SIGPIPE, SIG_IGN);
    std::signal(SIGXFSZ, SIG_IGN);
    try {
        CatchSignals();
        return Run(argc, argv);
    } catch (const UserError& error) {
        return ComplainAndExit(kWrong, error.what());
    } catch (const std::filesystem::filesystem_error& error) {
        return ComplainAndExit(kWrong, Text(error.path1().string(), ": ", error.code().message()));
    } catch (const std::bad_alloc&) {
        return ComplainAndExit(kBrokenOff, "there is not enough memory for a frame of this size");
    } catch (const std::exception& error) {
        return ComplainAndExit(kBrokenOff, error.what());
    }
}
