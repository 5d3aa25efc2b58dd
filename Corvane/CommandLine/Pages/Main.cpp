// Writes the manual pages and the completion scripts of `synthex` below a folder that has the layout of the
// installed `share`: synthex-pages FOLDER. Run by the build alone.
#include <cstdio>
#include <exception>
#include <filesystem>
#include <fstream>
#include <string>

#include "CommandText.h"
#include "Completions.h"
#include "ManPages.h"

namespace {

namespace fs = std::filesystem;

void WriteFile(const fs::path& path, const std::string& text) {
    fs::create_directories(path.parent_path());
    std::ofstream file(path, std::ios::binary);
    file.exceptions(std::ios::failbit | std::ios::badbit);
    file << text << std::flush;
}

void WriteAll(const fs::path& folder) {
    using namespace corvane::commandline;
    const auto commands = ReadCommands();
    for (const CommandText& command : commands)
        WriteFile(folder / ("man/man1/synthex" + (command.name.empty() ? "" : "-" + command.name) + ".1"),
                  CommandPage(command, commands));
    WriteFile(folder / "man/man5/synthex.5", SettingsPage());
    WriteFile(folder / "bash-completion/completions/synthex", BashCompletion(commands));
    WriteFile(folder / "zsh/site-functions/_synthex", ZshCompletion(commands));
    WriteFile(folder / "fish/vendor_completions.d/synthex.fish", FishCompletion(commands));
}

} // namespace

int main(int argc, char** argv) {
    try {
        if (argc != 2) return 2;
        WriteAll(argv[1]);
        return 0;
    } catch (const std::exception& exception) {
        std::fprintf(stderr, "synthex-pages: %s\n", exception.what());
        return 1;
    }
}
