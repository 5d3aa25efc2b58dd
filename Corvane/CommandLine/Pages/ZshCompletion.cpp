#include <fmt/format.h>

#include "Completions.h"

namespace corvane::commandline {

namespace {

/// What `_arguments` does for a value of that name.
std::string Action(const std::string& value) {
    const Offer offer = OfferFor(value);
    if (offer.folders) return "_files -/";
    if (offer.suffixes.size() == 1) return fmt::format("_files -g \"*.{}\"", offer.suffixes[0]);
    if (!offer.suffixes.empty()) return fmt::format("_files -g \"*.({})\"", fmt::join(offer.suffixes, "|"));
    if (offer.files) return "_files";
    if (offer.words.empty()) return " ";
    if (offer.goesOn) return fmt::format("compadd -S \"\" {}", fmt::join(offer.words, " "));
    return fmt::format("({})", fmt::join(offer.words, " "));
}

std::string ValueSpec(const std::string& value) {
    return fmt::format(":{}:{}", Escaped(value, ":\\"), Action(value));
}

/// The arguments of `_arguments` for the options, each in quotes.
std::string SpecsOf(const CommandText& command) {
    std::string specs;
    const auto add = [&](const std::string& spec) {
        specs += fmt::format(" \\\n            {}", InQuotes(spec));
    };
    for (const OptionText& option : command.options)
        for (const std::string& name : option.names) {
            const bool isLong = name.starts_with("--");
            const std::string others = option.many ? "*" : fmt::format("({})", fmt::join(option.names, " "));
            add(fmt::format("{}{}{}[{}]{}", others, name,
                            option.value.empty() ? ""
                            : isLong             ? "="
                                                 : "+",
                            Escaped(option.about, "[]:\\"),
                            option.value.empty() ? "" : ValueSpec(option.value)));
        }
    int place = 0;
    for (const OptionText& argument : command.arguments)
        add((argument.many ? "*" : std::to_string(++place)) + ValueSpec(argument.names[0]));
    return specs;
}

} // namespace

std::string ZshCompletion(std::span<const CommandText> commands) {
    std::string names, cases;
    for (const CommandText& command : commands.subspan(1)) {
        names +=
            fmt::format("            {}\n", InQuotes(command.name + ":" + Escaped(command.about, ":\\")));
        cases += fmt::format("        {})\n            _arguments -s{} ;;\n", command.name, SpecsOf(command));
    }
    return fmt::format(R"(#compdef synthex
# Completion of synthex for zsh, made from the program's own options.

_synthex() {{
    local curcontext="$curcontext" state line
    typeset -A opt_args
    _arguments -s -C{} \
            '1: :->command' '*:: :->arguments' && return
    case $state in
    command)
        local -a commands=(
{}        )
        _describe -t commands 'subcommand' commands ;;
    arguments)
        curcontext="${{curcontext%:*}}-$words[1]:"
        case $words[1] in
{}        esac ;;
    esac
}}

_synthex "$@"
)",
                       SpecsOf(commands[0]), names, cases);
}

} // namespace corvane::commandline
