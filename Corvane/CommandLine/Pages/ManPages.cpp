#include "ManPages.h"

#include <cctype>

#include <boost/algorithm/string/case_conv.hpp>
#include <boost/algorithm/string/finder.hpp>
#include <boost/algorithm/string/iter_find.hpp>
#include <boost/algorithm/string/predicate.hpp>
#include <boost/algorithm/string/replace.hpp>
#include <fmt/format.h>

namespace corvane::commandline {

namespace {

constexpr std::string_view kExamples = "Examples:\n", kStatus = "Exit status:";

/// What help explains, by the section of the page that it belongs to.
struct HelpSections {
    std::string description, examples, status;
};

std::string AsItStands(std::string_view text) {
    return fmt::format(".PP\n.nf\n{}\n.fi\n", PageText(text));
}

HelpSections SectionsOf(const std::string& help) {
    HelpSections sections;
    std::vector<std::string> paragraphs;
    boost::iter_split(paragraphs, help, boost::first_finder("\n\n"));
    for (std::string& paragraph : paragraphs) {
        if (boost::starts_with(paragraph, kExamples)) {
            sections.examples = ".SH EXAMPLES\n" + AsItStands(paragraph.substr(kExamples.size()));
            continue;
        }
        if (const std::size_t at = paragraph.find(kStatus); at != std::string::npos) {
            sections.status =
                ".SH EXIT STATUS\n" + PageText(paragraph.substr(at + kStatus.size() + 1)) + "\n";
            paragraph.erase(at);
        }
        if (!paragraph.empty()) sections.description += fmt::format(".PP\n{}\n", PageText(paragraph));
    }
    return sections;
}

std::string Italic(const std::string& text) {
    return "\\fI" + PageText(text) + "\\fR";
}

/// An option as its line says it: "--jobs N".
std::string HeadOf(const OptionText& option) {
    std::string head;
    for (const std::string& name : option.names)
        head += fmt::format("{}\\fB{}\\fR", head.empty() ? "" : ", ", PageText(name));
    return option.value.empty() ? head : head + " " + Italic(option.value);
}

std::string ListOf(const std::vector<OptionText>& options) {
    std::string list;
    for (const OptionText& option : options) {
        const bool isArgument = !option.names[0].starts_with('-');
        list += fmt::format(".TP\n{}\n{}{}\n", isArgument ? Italic(option.names[0]) : HeadOf(option),
                            PageText(option.about),
                            option.range.empty() ? "" : PageText(" (" + option.range + ")"));
        if (option.many && !isArgument) list += "It may be given several times.\n";
    }
    return list;
}

std::string SynopsisOf(const CommandText& command, bool hasSubcommands) {
    std::string line = "\\fBsynthex\\fR";
    if (!command.name.empty()) line += fmt::format(" \\fB{}\\fR", PageText(command.name));
    line += " [\\fIOPTION\\fR]...";
    if (hasSubcommands) line += " \\fISUBCOMMAND\\fR ...";
    for (const OptionText& argument : command.arguments)
        line += fmt::format(" {}{}{}{}", argument.required ? "" : "[", Italic(argument.names[0]),
                            argument.required ? "" : "]", argument.many ? "..." : "");
    return line + "\n";
}

std::string PageName(const CommandText& command) {
    return command.name.empty() ? "synthex" : "synthex-" + command.name;
}

} // namespace

std::string PageText(std::string_view text) {
    std::string page;
    bool lineBegins = true;
    for (const char character : text) {
        if (lineBegins && (character == '.' || character == '\'')) page += "\\&";
        lineBegins = character == '\n';
        switch (character) {
        case '\\': page += "\\e"; break;
        case '-': page += "\\-"; break;
        case '\'': page += "\\(aq"; break;
        case '^': page += "\\(ha"; break;
        case '~': page += "\\(ti"; break;
        case '`': page += "\\(ga"; break;
        default: page += character;
        }
    }
    return page;
}

std::string PageHead(std::string_view name, int section, std::string_view about) {
    return fmt::format(
        ".\\\" Made from the program's help.\n.TH {} {} \"\" \"Synthex {}\" \"Synthex\"\n.nh\n.ad l\n"
        ".SH NAME\n{} \\- {}\n",
        boost::to_upper_copy(std::string(name)), section, SYNTHEX_VERSION, PageText(name), PageText(about));
}

std::string CommandPage(const CommandText& command, std::span<const CommandText> all) {
    const bool isProgram = command.name.empty();
    std::string about = command.about;
    if (about.ends_with('.')) about.pop_back();
    const HelpSections help = SectionsOf(command.help);
    std::string name = about.substr(0, about.find(':'));
    name[0] = static_cast<char>(std::tolower(static_cast<unsigned char>(name[0])));
    std::string page = PageHead(PageName(command), 1, name);
    page += ".SH SYNOPSIS\n" + SynopsisOf(command, isProgram);
    page += fmt::format(".SH DESCRIPTION\n{}.\n{}", PageText(about), help.description);
    if (isProgram) {
        page += ".SH SUBCOMMANDS\n";
        for (const CommandText& other : all.subspan(1))
            page += fmt::format(".TP\n.BR {} (1)\n{}\n", PageText(PageName(other)), PageText(other.about));
    }
    if (!command.arguments.empty()) page += ".SH ARGUMENTS\n" + ListOf(command.arguments);
    page += ".SH OPTIONS\n" + ListOf(command.options) + help.examples + help.status + ".SH SEE ALSO\n";
    for (const CommandText& other : all)
        if (other.name != command.name) page += fmt::format(".BR {} (1),\n", PageText(PageName(other)));
    return page + ".BR synthex (5)\n";
}

} // namespace corvane::commandline
