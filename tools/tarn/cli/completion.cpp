#include "tools/tarn/cli/completion.h"

#include <algorithm>
#include <cctype>
#include <sstream>

#include "frames/formats.h"
#include "frames/geometry.h"

namespace tarn::tool {
namespace {

using Words = std::vector<std::string>;

Words OptionNames(const CLI::App& app) {
    Words names;
    for (const CLI::Option* option : app.get_options()) {
        if (option->get_group().empty()) continue;  // hidden
        for (const std::string& name : option->get_lnames()) names.push_back("--" + name);
        for (const std::string& name : option->get_snames()) names.push_back("-" + name);
    }
    return names;
}

// By how the help writes the option's value, such as "NAME|raw|pgm": what has a capital stands for
// something.
Words Values(const std::string& type) {
    Words values;
    std::istringstream alternatives(type);
    for (std::string value; std::getline(alternatives, value, '|');) {
        if (value == "ORDER") {
            values.insert(values.end(), std::begin(kColourOrders), std::end(kColourOrders));
        } else if (value == "NAME") {
            for (const NamedFormat& format : AllFormats()) values.push_back(format.name);
        } else if (std::none_of(value.begin(), value.end(),
                                [](unsigned char c) { return std::isupper(c); })) {
            values.push_back(value);
        }
    }
    return values;
}

std::vector<const CLI::App*> Verbs(const CLI::App& app) {
    return app.get_subcommands([](const CLI::App*) { return true; });
}

Words Candidates(const CLI::App& app, const Words& words) {
    const std::string& word = words.back();
    if (words.size() == 2) {
        if (word.starts_with("-")) return OptionNames(app);
        Words names;
        for (const CLI::App* verb : Verbs(app)) names.push_back(verb->get_name());
        return names;
    }
    const auto verbs = Verbs(app);
    const auto found = std::find_if(verbs.begin(), verbs.end(), [&](const CLI::App* verb) {
        return verb->get_name() == words[1];
    });
    if (found == verbs.end()) return {};
    const std::string& before = words[words.size() - 2];
    const CLI::Option* option =
        before.starts_with("-") ? (*found)->get_option_no_throw(before) : nullptr;
    if (option && option->get_type_size() > 0) return Values(option->get_type_name());
    return word.starts_with("-") ? OptionNames(**found) : Words{};
}

// Bash takes the = of --option=value for a word of its own.
Words WithoutEqualsSigns(Words words) {
    if (words.back() == "=") words.back() = "";
    words.erase(std::remove(words.begin() + 1, words.end(), "="), words.end());
    return words;
}

}  // namespace

std::string Completions(const CLI::App& app, const std::vector<std::string>& words) {
    std::string lines;
    if (words.size() < 2) return lines;
    const Words line = WithoutEqualsSigns(words);
    for (const std::string& candidate : Candidates(app, line)) {
        if (candidate.starts_with(line.back())) lines += candidate + "\n";
    }
    return lines;
}

}  // namespace tarn::tool
