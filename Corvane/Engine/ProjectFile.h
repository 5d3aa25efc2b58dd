#pragma once

#include <filesystem>
#include <string>

#include <nlohmann/json_fwd.hpp>

#include "Project.h"

namespace corvane {

/// The suffix of project files, with its dot.
inline constexpr char kProjectSuffix[] = ".cvproj";

/// A project as the text of a project file: JSON, one member a line. Clips whose files lie beside or below
/// `folder` are written relative to it, the others whole; an empty `folder` writes all of them whole. Throws
/// `Failure` if a name or a path is not valid UTF-8. Any thread, as for all functions here.
std::string WriteProject(const Project& project, const std::filesystem::path& folder);

/// A project from its text. `name` is what messages call it; relative paths begin at `folder`. It is no error
/// that a clip's file does not exist: the clip is missing, not the project.
///
/// Throws `Failure` with the reason if the text is cut or damaged, nests deeper than settings may, is no
/// project, or is of a newer version.
Project ReadProject(const std::string& text, const std::string& name, const std::filesystem::path& folder);

/// Opens a project file. Throws `Failure`, also if it can't be read.
Project LoadProject(const std::filesystem::path& path);

/// Saves a project file, whole or not at all. Returns what could not be kept of an older file, as a clause,
/// or nothing. Throws `Failure`, and an older file is as it was then.
[[nodiscard]] std::string SaveProject(const Project& project, const std::filesystem::path& path);

/// The JSON schema (draft 2020-12) of project files as they are written. Reading passes unknown members over.
nlohmann::ordered_json ProjectSchema();

} // namespace corvane
