#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

namespace corvane {

/// A file name with one printf-style number in it: `name.%05d.png` or `name.%d.png`; `%%` is a percent sign.
class NumberedName {
  public:
    /// Empty where the name has no number. Throws `UsageFailure` where it has several, or anything else after
    /// a percent sign. The folder part is left as it is.
    static std::optional<NumberedName> Parse(const std::filesystem::path& path);

    std::filesystem::path For(std::int64_t number) const;

  private:
    std::filesystem::path mFolder;
    std::string mBefore;
    std::string mAfter;
    int mDigits = 0;
};

} // namespace corvane
