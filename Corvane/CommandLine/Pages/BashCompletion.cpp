#include <map>

#include <fmt/format.h>

#include "Completions.h"

namespace corvane::commandline {

namespace {

// `@...@` are filled in. The functions set `reply`.
constexpr char kScript[] = R"(# Completion of synthex for bash, made from the program's own options.

# What the value of an option of a subcommand is called; nothing for flags.
_synthex_value() {
    case "$1 $2" in
@VALUES@    *) reply= ;;
    esac
}

# What the argument at a place, from 1, of a subcommand is called.
_synthex_argument() {
    case "$1 $2" in
@ARGUMENTS@    *) reply= ;;
    esac
}

_synthex_options() {
    case "$1" in
@OPTIONS@    esac
}

# Offers what there is for a value of that name.
_synthex_offer() {
    case "$1" in
@OFFERS@    esac
}

_synthex_files() {
    compopt -o filenames
    mapfile -t COMPREPLY < <(
        compgen -d -- "$current"
        for suffix; do compgen -f -X "!*$suffix" -- "$current"; done | while IFS= read -r file; do
            [[ -d $file ]] || printf '%s\n' "$file"
        done
    )
}

_synthex_words() {
    mapfile -t COMPREPLY < <(compgen -W "$1" -- "$current")
    # The shell keeps what stands before its last separator.
    local kept=${current%"${current##*[:=]}"} i
    for i in "${!COMPREPLY[@]}"; do COMPREPLY[i]=${COMPREPLY[i]#"$kept"}; done
}

_synthex() {
    local line=${COMP_LINE:0:COMP_POINT} words current command= place=0 reply i word
    # Not COMP_WORDS: they are taken apart at colons and equals signs.
    read -a words <<< "$line"
    [[ $line == *[[:space:]] ]] && words+=("")
    current=${words[-1]}
    COMPREPLY=()
    for ((i = 1; i < ${#words[@]} - 1; ++i)); do
        word=${words[i]}
        if [[ $word == -* ]]; then
            _synthex_value "$command" "$word"
            [[ -n $reply ]] && ((++i))
        elif [[ -z $command ]]; then
            command=$word
        else
            ((++place))
        fi
    done
    if ((i == ${#words[@]})); then
        _synthex_offer "$reply"
    elif [[ $current == --*=* ]]; then
        _synthex_value "$command" "${current%%=*}"
        current=${current#*=}
        _synthex_offer "$reply"
    elif [[ $current == -* ]]; then
        _synthex_options "$command"
        _synthex_words "$reply"
    elif [[ -z $command ]]; then
        _synthex_words "@COMMANDS@"
    else
        _synthex_argument "$command" $((place + 1))
        _synthex_offer "$reply"
    fi
}
complete -F _synthex synthex
)";

std::string Offered(const Offer& offer) {
    std::string suffixes;
    for (const std::string& suffix : offer.suffixes) suffixes += " ." + suffix;
    if (offer.folders) return "_synthex_files";
    if (offer.files) return "_synthex_files" + (suffixes.empty() ? " ''" : suffixes);
    if (offer.words.empty()) return {};
    return fmt::format("{}_synthex_words \"{}\"", offer.goesOn ? "compopt -o nospace; " : "",
                       fmt::join(offer.words, " "));
}

/// Puts a text in the place of the mark of that name.
void Fill(std::string& script, std::string_view name, const std::string& text) {
    const std::string mark = fmt::format("@{}@", name);
    script.replace(script.find(mark), mark.size(), text);
}

} // namespace

std::string BashCompletion(std::span<const CommandText> commands) {
    std::string values, arguments, options, names;
    std::map<std::string, std::string> offers;
    const auto note = [&](const std::string& value) {
        if (std::string offered = Offered(OfferFor(value)); !offered.empty()) offers[value] = offered;
    };
    for (const CommandText& command : commands) {
        if (!command.name.empty()) names += (names.empty() ? "" : " ") + command.name;
        std::string list;
        for (const OptionText& option : command.options)
            for (const std::string& name : option.names) {
                list += (list.empty() ? "" : " ") + name;
                if (option.value.empty()) continue;
                values += fmt::format("    {}) reply={} ;;\n", InQuotes(command.name + " " + name),
                                      InQuotes(option.value));
                note(option.value);
            }
        options += fmt::format("    '{}') reply='{}' ;;\n", command.name, list);
        int place = 0;
        for (const OptionText& argument : command.arguments) {
            const std::string at = argument.many ? "*" : std::to_string(++place);
            arguments += fmt::format("    \"{} \"{}) reply={} ;;\n", command.name, at, argument.names[0]);
            note(argument.names[0]);
        }
    }
    std::string rows;
    for (const auto& [value, offered] : offers)
        rows += fmt::format("    {}) {} ;;\n", InQuotes(value), offered);
    std::string script = kScript;
    Fill(script, "VALUES", values);
    Fill(script, "ARGUMENTS", arguments);
    Fill(script, "OPTIONS", options);
    Fill(script, "OFFERS", rows);
    Fill(script, "COMMANDS", names);
    return script;
}

} // namespace corvane::commandline
