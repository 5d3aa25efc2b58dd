#include "CommandText.h"

#include <algorithm>
#include <filesystem>

#include <CLI/CLI.hpp>
#include <boost/algorithm/string/trim.hpp>

#include "CommandLine/Arguments.h"
#include "CommandLine/OptionForms.h"
#include "Compare/FindingKinds.h"
#include "Export/Targets/ExportKinds.h"
#include "Sweep/Axes.h"

namespace corvane::commandline {

namespace {

OptionText TextOf(const CLI::Option& option) {
    OptionText text{.names = {}, .value = {}, .range = {}, .about = option.get_description()};
    if (option.get_positional()) {
        text.names = {option.get_name(true)};
    } else {
        for (const std::string& name : option.get_snames()) text.names.push_back("-" + name);
        for (const std::string& name : option.get_lnames()) text.names.push_back("--" + name);
    }
    if (option.get_items_expected_max() > 0) text.value = option.get_type_name();
    // Ranges stand behind the name of the value: "N:INT in [1 - 512]".
    if (const std::size_t at = text.value.find(" in ["); at != std::string::npos) {
        const std::size_t begin = at + std::string_view(" in [").size();
        text.range = text.value.substr(begin, text.value.find(']', begin) - begin);
        text.value.erase(text.value.rfind(':', at));
    }
    text.required = option.get_required();
    text.many = option.get_items_expected_max() > 1 ||
                option.get_multi_option_policy() == CLI::MultiOptionPolicy::TakeAll;
    return text;
}

CommandText TextOf(const CLI::App& command, const std::string& name) {
    CommandText text{.name = name, .about = command.get_description(), .arguments = {}, .options = {}};
    const auto isForPeople = [](const CLI::Option* option) { return !option->get_group().empty(); };
    for (const CLI::Option* const option : command.get_options(isForPeople))
        (option->get_positional() ? text.arguments : text.options).push_back(TextOf(*option));
    text.help = boost::algorithm::trim_copy_if(command.get_footer(), boost::is_any_of("\n"));
    return text;
}

/// The names of all rows of a table.
template <class Rows>
std::vector<std::string> NamesOf(const Rows& rows) {
    std::vector<std::string> names;
    for (const auto& row : rows) names.emplace_back(row.name);
    return names;
}

} // namespace

std::vector<CommandText> ReadCommands() {
    std::vector<CommandText> commands;
    DescribeArguments([&](const CLI::App& program) {
        commands.push_back(TextOf(program, ""));
        for (const CLI::App* const command : program.get_subcommands([](const CLI::App*) { return true; }))
            if (!command->get_group().empty()) commands.push_back(TextOf(*command, command->get_name()));
    });
    return commands;
}

Offer OfferFor(std::string_view value) {
    if (value == "CLIP" || value == "BASE") return {.files = true, .suffixes = {"synthex"}};
    if (value == "FILE") return {.files = true, .suffixes = {"synthex", "cvproj"}};
    if (value == "OUT" || value == "VIDEO" || value == "MANIFEST") return {.files = true};
    if (value.starts_with("FILE."))
        return {.files = true, .suffixes = {std::string(value.substr(value.find('.') + 1))}};
    if (value == "BUNDLE" || value == "DIR") return {.folders = true};
    if (value == "SUFFIX") return {.words = NamesOf(ExportKinds())};
    if (value.starts_with("CODEC")) return {.words = NamesOf(ExportCodecs())};
    if (value.starts_with("KIND,")) return {.words = {std::begin(kFindingKinds), std::end(kFindingKinds)}};
    if (value == "KIND") return {.words = {std::begin(kSchemaKinds), std::end(kSchemaKinds)}};
    if (value == "N/D") return {.words = {std::begin(kUsualRates), std::end(kUsualRates)}};
    if (value.starts_with("AXIS=")) {
        Offer offer{.words = NamesOf(AxisTable()), .goesOn = true};
        for (std::string& word : offer.words) word += '=';
        return offer;
    }
    return {};
}

std::string Escaped(std::string_view text, std::string_view characters) {
    std::string escaped;
    for (const char character : text) {
        if (characters.find(character) != std::string_view::npos) escaped += '\\';
        escaped += character;
    }
    return escaped;
}

std::string InQuotes(std::string_view word) {
    std::string quoted = "'";
    for (const char character : word) quoted += character == '\'' ? "'\\''" : std::string(1, character);
    return quoted + "'";
}

} // namespace corvane::commandline
