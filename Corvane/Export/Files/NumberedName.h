#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>
#include <vector>

namespace corvane {

/// A file name with one printf-style number in it: `name.%05d.png` or `name.%d.png`; `%%` is a percent sign.
class NumberedName {
  public:
    /// The name that `path` is; none if it has no number. Throws `UsageFailure` if it has several, or
    /// anything else after a percent sign. Percent signs of the folder are left as they are. Any thread.
    static std::optional<NumberedName> Parse(const std::filesystem::path& path);

    /// The path for that number, which is not negative. Any thread.
    std::filesystem::path For(std::int64_t number) const;
    /// The numbers of the files that have such names, in order. Throws `FileError` if the folder can't be
    /// read. Any thread.
    std::vector<std::int64_t> Existing() const;

  private:
    std::filesystem::path mFolder;
    std::string mBefore;
    std::string mAfter;
    int mDigits = 0;
};

} // namespace corvane
