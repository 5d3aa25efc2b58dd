#include <set>
#include <string_view>

#include <fmt/format.h>

#include "Completions.h"

namespace corvane::commandline {

namespace {

/// A word in the quotes of fish, in which a backslash stands before backslashes and quotes.
std::string Quoted(std::string_view word) {
    return "'" + Escaped(word, "'\\") + "'";
}

/// What `complete` is told of a value of that name, behind the option.
std::string ValueOf(const std::string& value) {
    const Offer offer = OfferFor(value);
    if (offer.folders) return "-x -a '(__fish_complete_directories)'";
    if (!offer.suffixes.empty())
        return fmt::format("-x -a {}",
                           Quoted(fmt::format("(__synthex_files '{}')", fmt::join(offer.suffixes, "|"))));
    if (offer.files) return "-r -F";
    return offer.words.empty()
               ? "-x"
               : fmt::format("-x -a {}", Quoted(fmt::format("{}", fmt::join(offer.words, " "))));
}

// `@VALUED@` is filled in by the options that take a value.
constexpr char kFunctions[] = R"(# Completion of synthex for fish, made from the program's own options.

# Folders, and files of some suffixes.
function __synthex_files
    __fish_complete_path (commandline -ct) | string match -r "^[^\t]*(?:/|\.(?:$argv))(?:\t.*)?\$"
end

# Whether an argument is due whose place is (-eq) or is at least (-ge) a number; 0 is the subcommand.
function __synthex_at
    set -l place 0
    set -l isvalue no
    for word in (commandline -opc)[2..]
        if test $isvalue = yes
            set isvalue no
        else if contains -- $word @VALUED@
            set isvalue yes
        else if not string match -q -- '-*' $word
            set place (math $place + 1)
        end
    end
    test $isvalue = no -a $place $argv[1] $argv[2]
end

complete -c synthex -f
)";

/// The options that take a value, of any subcommand.
std::string ValuedOptions(std::span<const CommandText> commands) {
    std::set<std::string> names;
    for (const CommandText& command : commands)
        for (const OptionText& option : command.options)
            if (!option.value.empty()) names.insert(option.names.begin(), option.names.end());
    return fmt::format("{}", fmt::join(names, " "));
}

} // namespace

std::string FishCompletion(std::span<const CommandText> commands) {
    std::string script = kFunctions;
    script.replace(script.find("@VALUED@"), std::string_view("@VALUED@").size(), ValuedOptions(commands));
    for (const CommandText& command : commands) {
        const std::string condition =
            command.name.empty() ? "__fish_use_subcommand" : "__fish_seen_subcommand_from " + command.name;
        const std::string begin = fmt::format("complete -c synthex -n {} ", Quoted(condition));
        script += "\n";
        if (!command.name.empty())
            script += fmt::format("complete -c synthex -n __fish_use_subcommand -a {} -d {}\n", command.name,
                                  Quoted(command.about));
        for (const OptionText& option : command.options) {
            script += begin;
            for (const std::string& name : option.names)
                script +=
                    name.starts_with("--") ? "-l " + name.substr(2) + " " : "-s " + name.substr(1) + " ";
            if (!option.value.empty()) script += ValueOf(option.value) + " ";
            script += "-d " + Quoted(option.about) + "\n";
        }
        int place = 0;
        for (const OptionText& argument : command.arguments) {
            const std::string at =
                fmt::format("; and __synthex_at {} {}", argument.many ? "-ge" : "-eq", ++place);
            script += fmt::format("complete -c synthex -n {} {}\n", Quoted(condition + at),
                                  ValueOf(argument.names[0]));
        }
    }
    return script;
}

} // namespace corvane::commandline
