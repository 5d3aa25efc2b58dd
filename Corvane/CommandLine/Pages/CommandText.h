#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace corvane::commandline {

/// An option, or an argument without a dash, as it is declared.
struct OptionText {
    std::vector<std::string> names; ///< "-h", "--help"; of an argument its one name, such as "CLIP"
    std::string value;              ///< what the value is called: "N", "FIRST:LAST"; empty for a flag
    std::string range;              ///< "1 - 512"; empty if any value will do
    std::string about;
    bool required = false;
    bool many = false; ///< whether it may be given several times
};

/// A subcommand; or the program itself, whose name is empty.
struct CommandText {
    std::string name;
    std::string about;
    std::vector<OptionText> arguments; ///< in their order
    std::vector<OptionText> options;
    std::string help = {}; ///< examples and explanations, paragraphs that empty lines separate
};

/// All that the program understands and that is for people: the program first, then the subcommands in the
/// order in which help lists them. Main thread.
std::vector<CommandText> ReadCommands();

/// What a shell can offer for a value.
struct Offer {
    std::vector<std::string> words = {};    ///< in the order in which to list them
    bool files = false;                     ///< files, too
    std::vector<std::string> suffixes = {}; ///< of these files alone, such as "synthex"; any if empty
    bool folders = false;                   ///< folders, and no files
    bool goesOn = false;                    ///< whether more is written behind a word: "rate="
};

/// What there is to offer for a value of that name (`OptionText::value`, or the name of an argument); nothing
/// for names that stand for numbers and the like. Any thread.
Offer OfferFor(std::string_view value);

/// The text with a backslash before each of these characters.
std::string Escaped(std::string_view text, std::string_view characters);

/// A word for the Bourne shell and its like, in quotes.
std::string InQuotes(std::string_view word);

} // namespace corvane::commandline
