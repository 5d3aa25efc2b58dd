#pragma once

#include <filesystem>
#include <string>
#include <variant>
#include <vector>

#include "Axes.h"

namespace corvane {

/// A path with placeholders such as {rate}, each the name of an axis. A value. Any thread.
class OutputName {
  public:
    /// Throws `UsageFailure`, which lists what there is, for a placeholder that is none, and for a name that
    /// is not UTF-8, names no file or is that of settings.
    explicit OutputName(const std::filesystem::path& name);

    /// The folder that all members share: what comes before the first placeholder. "." if there is none.
    const std::filesystem::path& Folder() const { return mFolder; }
    /// Whether it has the placeholder of that axis.
    bool Has(const AxisRow& axis) const;
    /// The path of a member's output, from `Folder`. It gets the suffix of the usual container of its codec,
    /// unless the name has a suffix that is no placeholder, or {container}. Throws `UsageFailure` if nothing
    /// tells the container.
    std::filesystem::path For(const MemberSpec& spec) const;
    /// The name with placeholders added for more axes, before its suffix: what a person can write instead.
    std::string With(const std::vector<const AxisRow*>& axes) const;

  private:
    using Piece = std::variant<std::string, const AxisRow*>;

    bool GivesSuffix() const;

    std::string mText;
    std::filesystem::path mFolder;
    std::vector<Piece> mPieces; // of what follows the folder
};

/// A word as a part of a file name: what no file system, shell or exporter takes for anything else. Slashes
/// and the like become underscores. Any thread.
std::string SafeName(std::string_view word);

} // namespace corvane
