#pragma once

#include <span>
#include <string>

#include "CommandText.h"

namespace corvane::commandline {

// Manual pages, in the language of groff's macros `man`. Any thread.

/// The page of the program or of one of its subcommands, for section 1. `all` are the program and its
/// subcommands.
std::string CommandPage(const CommandText& command, std::span<const CommandText> all);

/// The page of settings files, for section 5.
std::string SettingsPage();

/// Text of a page: nothing in it is taken for a request, and hyphens are such as can be copied.
std::string PageText(std::string_view text);

/// The title and the name, which a page begins with: `name` and `about` are what `whatis` lists.
std::string PageHead(std::string_view name, int section, std::string_view about);

} // namespace corvane::commandline
