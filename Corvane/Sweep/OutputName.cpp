#include "OutputName.h"

#include <algorithm>
#include <stdexcept>
#include <utility>

#include <fmt/format.h>

#include "Engine/Failure.h"
#include "Export/Targets/ExportKinds.h"
#include "Mosk.h"

namespace corvane {
namespace {

namespace fs = std::filesystem;

bool IsSafe(char c) {
    constexpr std::string_view kOthers = "._-+=,~@";
    return (c >= '0' && c <= '9') || (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') ||
           (static_cast<unsigned char>(c) & 0x80) != 0 || kOthers.find(c) != std::string_view::npos;
}

// The container that files of a codec usually come in.
std::string ContainerOf(std::string_view codec) {
    codec = codec.substr(0, codec.find(':'));
    for (const ExportCodec& row : ExportCodecs())
        if (row.name == codec && row.choices[0].kind != nullptr) return row.choices[0].kind;
    return "mkv";
}

void CheckText(const std::string& text) {
    try {
        Mosk::FromUTF8(text);
    } catch (const std::invalid_argument&) {
        throw UsageFailure(fmt::format("{}: the name is not valid UTF-8; choose another one", text));
    }
    const fs::path path(text);
    if (!path.has_filename())
        throw UsageFailure(fmt::format("{}: this names no file; write what outputs are called, such as {}",
                                       text, (path / "{name}.{codec}").string()));
    if (path.extension() == ".synthex")
        throw UsageFailure(
            fmt::format("{}: settings files are made by themselves; name what is exported, such as "
                        "{}.mkv",
                        text, path.stem().string()));
}

} // namespace

std::string SafeName(std::string_view word) {
    std::string name(word.substr(word.starts_with('#') ? 1 : 0));
    std::ranges::replace_if(
        name, [](char c) { return !IsSafe(c); }, '_');
    return name;
}

OutputName::OutputName(const fs::path& name) : mText(name.string()) {
    CheckText(mText);
    const std::size_t slash = mText.substr(0, mText.find('{')).rfind('/');
    mFolder = slash == std::string::npos ? "." : slash == 0 ? "/" : mText.substr(0, slash);
    std::string_view rest = std::string_view(mText).substr(slash == std::string::npos ? 0 : slash + 1);
    while (!rest.empty()) {
        const std::size_t start = rest.find('{');
        if (start != 0) mPieces.emplace_back(std::string(rest.substr(0, start)));
        if (start == std::string_view::npos) break;
        const std::size_t end = rest.find('}', start);
        const std::string_view word =
            rest.substr(start + 1, end == std::string_view::npos ? end : end - start - 1);
        const AxisRow* const axis = end == std::string_view::npos ? nullptr : FindAxis(word);
        if (axis == nullptr)
            throw UsageFailure(fmt::format("{}: there is no placeholder {{{}}}; choose some of {}, in braces",
                                           mText, word, ListAxes()));
        mPieces.emplace_back(axis);
        rest.remove_prefix(end + 1);
    }
}

bool OutputName::Has(const AxisRow& axis) const {
    return std::ranges::find(mPieces, Piece(&axis)) != mPieces.end();
}

bool OutputName::GivesSuffix() const {
    const Piece& last = mPieces.back();
    if (const auto* const axis = std::get_if<const AxisRow*>(&last)) {
        const auto* const before =
            mPieces.size() < 2 ? nullptr : std::get_if<std::string>(&mPieces.end()[-2]);
        return *axis == FindAxis("container") && before != nullptr && before->ends_with('.');
    }
    const std::string& text = std::get<std::string>(last);
    const std::size_t point = text.rfind('.');
    return point != std::string::npos && point + 1 < text.size() &&
           text.find('/', point) == std::string::npos;
}

fs::path OutputName::For(const MemberSpec& spec) const {
    std::string path;
    for (const Piece& piece : mPieces)
        if (const auto* const axis = std::get_if<const AxisRow*>(&piece))
            path += SafeName((*axis)->write(spec));
        else
            path += std::get<std::string>(piece);
    if (GivesSuffix()) return path;
    if (spec.codec.empty() && spec.container.empty())
        throw UsageFailure(
            fmt::format("{}: the name does not tell the kind of output; put a suffix behind it ({}), "
                        "or choose a codec or a container",
                        mText, ListKinds()));
    return path + '.' + (spec.container.empty() ? ContainerOf(spec.codec) : spec.container);
}

std::string OutputName::With(const std::vector<const AxisRow*>& axes) const {
    std::string more;
    for (const AxisRow* const axis : axes) more += fmt::format("-{{{}}}", axis->name);
    const std::size_t point = mText.rfind('.');
    const bool suffix = point != std::string::npos && mText.find('/', point) == std::string::npos;
    return std::string(mText).insert(suffix ? point : mText.size(), more);
}

} // namespace corvane
