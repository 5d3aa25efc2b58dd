// Sought: arguments or names that crash, come back different, or do something to a terminal.
#include <algorithm>
#include <sstream>
#include <vector>

#include "CommandLine/Arguments.h"
#include "CommandLine/Commands.h"
#include "CommandLine/Console.h"
#include "Engine/Failure.h"
#include "Export/Files/NumberedName.h"
#include "Mosk.h"
#include "Require.h"
#include "Services/Foundation/QuotedText.h"
#include "Services/UI/ScriptedPlatform.h"

namespace corvane::commandline {

// Nothing is done, and nothing said.
// clang-format off
#define STAND_IN(name) int Run##name(const name##Request&) { return kExitDone; }
STAND_IN(Info); STAND_IN(Render); STAND_IN(Sweep); STAND_IN(New); STAND_IN(Edit);
STAND_IN(Compare); STAND_IN(Formats); STAND_IN(Desktop); STAND_IN(Validate); STAND_IN(Checks);
STAND_IN(Schema); STAND_IN(Codecs);
// clang-format on
void PrintError(std::string_view) {}

} // namespace corvane::commandline

/// Tries what may be refused.
template <class Step>
static void Try(const Step& step) try {
    step();
} catch (const std::exception&) {
    return;
}

static bool IsControl(char c) {
    return (c >= 0 && c < ' ') || c == '\x7F';
}

int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size) {
    const std::string text(reinterpret_cast<const char*>(data), size);
    // An argument a line, each a name, too.
    std::istringstream lines(text);
    std::vector<std::string> arguments = {"synthex"};
    std::vector<const char*> pointers;
    for (std::string line; std::getline(lines, line); arguments.emplace_back(line.c_str())) {
        const std::string quoted = corvane::Quoted(line);
        Require(corvane::Quoted(quoted) == quoted && std::ranges::none_of(quoted, IsControl));
        Try([&] { Require(Mosk::ToUTF8(Mosk::FromUTF8(line)) == line); });
        Try([&] { Require(corvane::NumberedName::Parse(line).value().For(7) != line); });
        Try([&] { Require(!corvane::ScriptedAction::Parse(line).id.empty()); });
        Try([&] { Require(corvane::ScriptedAnswer::Parse(line).text == line); });
    }
    for (const std::string& argument : arguments) pointers.push_back(argument.c_str());
    corvane::commandline::RunArguments(static_cast<int>(pointers.size()), pointers.data());
    return 0;
}
