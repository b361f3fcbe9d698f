#include "tools/tarn/cli/man_page.h"

#include <algorithm>
#include <sstream>

namespace tarn::tool {
namespace {

// What is a character of roff's own, and a dash that is to be copied and pasted as one.
std::string Escaped(const std::string& text) {
    std::string escaped;
    for (const char c : text) {
        if (c == '\\') {
            escaped += "\\e";
        } else if (c == '-') {
            escaped += "\\-";
        } else {
            if ((c == '.' || c == '\'') && (escaped.empty() || escaped.back() == '\n')) {
                escaped += "\\&";
            }
            escaped += c;
        }
    }
    return escaped;
}

// Help is broken into lines for a terminal; man breaks its own.
std::string Flowing(std::string text) {
    std::replace(text.begin(), text.end(), '\n', ' ');
    return Escaped(text);
}

std::string Paragraph(const std::string& lines, bool verbatim) {
    if (lines.empty()) return "";
    return verbatim ? ".PP\n.EX\n" + Escaped(lines) + ".EE\n" : ".PP\n" + Escaped(lines);
}

// Paragraphs, and indented lines, which stay as they are.
std::string Prose(const std::string& text) {
    std::istringstream lines(text);
    std::string page, paragraph;
    bool verbatim = false;
    for (std::string line; std::getline(lines, line);) {
        const bool indented = line.starts_with("  ");
        if (indented != verbatim || line.empty()) {
            page += Paragraph(paragraph, verbatim);
            paragraph.clear();
        }
        verbatim = indented;
        if (!line.empty()) paragraph += line + "\n";
    }
    return page + Paragraph(paragraph, verbatim);
}

std::string Options(const CLI::App& app, bool help) {
    std::string page;
    for (const CLI::Option* option : app.get_options()) {
        const bool hidden = option->get_group().empty();
        if (hidden || (!help && option == app.get_help_ptr())) continue;
        const std::string names =
            option->get_positional() ? option->get_name(true) : option->get_name(false, true);
        page += ".TP\n\\fB" + Flowing(names) + "\\fR";
        if (!option->get_type_name().empty())
            page += " \\fI" + Flowing(option->get_type_name()) + "\\fR";
        if (option->get_required()) page += " (required)";
        page += "\n" + Flowing(option->get_description()) + "\n";
    }
    return page;
}

std::string Usage(const CLI::App& verb) {
    std::string usage = "tarn " + verb.get_name();
    for (const CLI::Option* option : verb.get_options()) {
        if (!option->get_positional()) continue;
        usage += option->get_required() ? " " + option->get_name(true)
                                        : " [" + option->get_name(true) + "]";
    }
    return usage + " [OPTIONS]";
}

}  // namespace

std::string ManPage(const CLI::App& app) {
    const auto verbs = app.get_subcommands([](const CLI::App*) { return true; });
    std::string page = ".TH TARN 1 \"\" \"tarn " TARN_VERSION "\" \"User Commands\"\n";
    page += ".SH NAME\ntarn \\- bins, converts and inspects packed raw frames\n.SH SYNOPSIS\n";
    for (const CLI::App* verb : verbs) page += ".B " + Flowing(Usage(*verb)) + "\n.br\n";
    page += ".SH DESCRIPTION\n" + Flowing(app.get_description()) + "\n" + Prose(app.get_footer());
    page += ".SH OPTIONS\n" + Options(app, true) + ".SH VERBS\n";
    for (const CLI::App* verb : verbs) {
        page += ".SS " + Flowing(Usage(*verb)) + "\n" + Flowing(verb->get_description()) + ".\n" +
                Options(*verb, false) + Prose(verb->get_footer());
    }
    return page;
}

}  // namespace tarn::tool
