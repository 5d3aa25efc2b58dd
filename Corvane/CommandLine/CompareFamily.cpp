#include "CompareFamily.h"

#include <algorithm>
#include <cctype>
#include <cstdint>
#include <memory>
#include <string>
#include <system_error>
#include <utility>
#include <vector>

#include <fmt/format.h>

#include "Compare/CompareText.h"
#include "Compare/Loader/CompareLoader.h"
#include "CompareJSON.h"
#include "Console.h"
#include "EndingSignal.h"
#include "Engine/TextFile.h"
#include "JSONLine.h"
#include "ProgressBar.h"
#include "Services/Foundation/AtomicFile.h"
#include "Sweep/Loader/SweepLoader.h"

namespace corvane::commandline {

namespace {

namespace fs = std::filesystem;
using JSON = nlohmann::ordered_json;

/// A relative path as a link of a page.
std::string LinkTo(const fs::path& path) {
    std::string link;
    for (const char character : path.generic_string()) {
        const auto byte = static_cast<unsigned char>(character);
        if (std::isalnum(byte) != 0 || std::string_view("-._~/").find(character) != std::string_view::npos)
            link += character;
        else
            link += fmt::format("%{:02X}", byte);
    }
    return link;
}

std::string SummaryOf(const CompareReport& report) {
    if (report.findings.empty()) return kNothingFoundText;
    const Finding& worst = report.findings.front();
    const std::size_t more = report.findings.size() - 1;
    return fmt::format("{}: {}{}", worst.kind, worst.sentence,
                       more == 0 ? "" : fmt::format(" ({} more)", more));
}

/// One comparison of a family. Main thread.
class FamilyComparison {
  public:
    explicit FamilyComparison(const CompareRequest& request)
        : mRequest(request), mBundle(std::make_shared<Bundle>(Bundle::Find(request.bundle))),
          mMembers(LoadSweepModule().Find(request.clip, request.video)), mBar(!request.quiet) {}

    int Run() {
        EndingSignal::Take();
        if (!mRequest.report.empty()) WritePage("index.html", IndexPage()); // tells early if that can't be
        if (mRequest.json)
            Print(fmt::format("{{\"manifest\":{},\"folder\":{},\"members\":[", Text(mRequest.clip),
                              Text(mRequest.video)));
        for (const MemberVideo& member : mMembers) {
            Compare(member);
            ++mDone;
            if (EndingSignal::Cancelled()) break;
        }
        mBar.Wipe();
        if (mRequest.json) Print("]}\n");
        if (!mRequest.report.empty()) WritePage("index.html", IndexPage());
        if (!mRequest.json && !mRequest.quiet)
            PrintLine(fmt::format("{}: {} members: nothing beyond the tolerance in {}, findings in {}, {} "
                                  "could not be compared",
                                  mRequest.clip.string(), mMembers.size(), mGood, mFound, mFailed));
        if (EndingSignal::Cancelled()) return EndingSignal::ExitStatus();
        return mFailed > 0 ? kExitFailed : mFound > 0 ? kExitFindings : kExitDone;
    }

  private:
    static std::string Text(const fs::path& path) {
        std::string text = JSONLine(path.string());
        text.pop_back();
        return text;
    }

    void Compare(const MemberVideo& member) {
        if (member.video.empty()) return Fail(member, member.whyNone);
        CompareOptions options = mRequest.options;
        if (!mRequest.frames && member.part) options.frames = {member.part->first, member.part->second};
        const auto progress = [&](std::int64_t done, std::int64_t total) {
            mBar.Update(fmt::format("member {} of {}: {} of {} pictures", mDone + 1, mMembers.size(), done,
                                    std::max(done, total)));
        };
        std::unique_ptr<Clip> clip;
        CompareReport report;
        try {
            clip = Clip::OpenPrefs(mBundle, member.settingsFile, WriteSettings(member.settings));
            if (mRequest.frames) {
                const auto [first, last] = FramesOf(*mRequest.frames, *clip);
                options.frames = {first, last};
            }
            report = LoadAndCompareClip(*clip, member.video, options, progress, EndingSignal::Cancelled());
        } catch (const Failure& failure) {
            return Fail(member, failure.what());
        }
        Tell(member, report);
        if (!mRequest.report.empty()) WritePage(PageOf(member), LoadAndMakeReportPage(*clip, report));
    }

    void Tell(const MemberVideo& member, const CompareReport& report) {
        const std::string summary = SummaryOf(report);
        ++(report.findings.empty() ? mGood : mFound);
        AddRow(member, summary, true);
        if (mRequest.json) {
            JSON line{{"output", member.output}};
            line.update(CompareJSON(report));
            return PrintMember(line);
        }
        mBar.Wipe();
        if (!mRequest.quiet || !report.findings.empty())
            PrintLine(fmt::format("{}: {}", member.output, summary));
    }

    void Fail(const MemberVideo& member, const std::string& why) {
        ++mFailed;
        AddRow(member, why, false);
        mBar.Wipe();
        PrintError(why);
        if (mRequest.json) PrintMember({{"output", member.output}, {"failure", why}});
    }

    void PrintMember(const JSON& object) {
        std::string line = JSONLine(object);
        line.pop_back();
        Print((std::exchange(mFirst, false) ? "\n" : ",\n") + line);
    }

    static fs::path PageOf(const MemberVideo& member) { return member.output + ".html"; }

    void AddRow(const MemberVideo& member, const std::string& text, bool hasPage) {
        const std::string name = EscapedText(member.output);
        mRows +=
            fmt::format("<tr><td>{}<td>{}</tr>\n",
                        hasPage ? fmt::format("<a href='{}'>{}</a>", LinkTo(PageOf(member)), name) : name,
                        EscapedText(text));
    }

    std::string IndexPage() const {
        return fmt::format("<!DOCTYPE html>\n<html lang='en'>\n<meta charset='utf-8'>\n<title>{0}</title>\n"
                           "<style>:root {{ color-scheme: light dark; }} body {{ font: 15px/1.45 system-ui, "
                           "sans-serif; }}\ntd {{ padding: .2em 1em .2em 0; vertical-align: top; }}</style>\n"
                           "<h1>{0}</h1>\n<table>\n{1}</table>\n",
                           EscapedText(mRequest.clip.string()), mRows);
    }

    void WritePage(const fs::path& name, const std::string& page) const {
        const fs::path file = mRequest.report / name;
        std::error_code error;
        fs::create_directories(file.parent_path(), error);
        if (error)
            throw Failure(fmt::format("{}: this folder for the pages can't be made ({}); choose another one",
                                      file.parent_path().string(), error.message()));
        std::ignore = WriteTextFile(file, page);
    }

    const CompareRequest& mRequest;
    const std::shared_ptr<Bundle> mBundle;
    const std::vector<MemberVideo> mMembers;
    ProgressBar mBar;
    std::size_t mDone = 0, mGood = 0, mFound = 0, mFailed = 0;
    bool mFirst = true; // of the members in JSON
    std::string mRows;  // of the index
};

} // namespace

bool MeansFamily(const fs::path& clip) {
    std::error_code error;
    return clip.extension() == ".json" || fs::is_directory(clip, error);
}

int CompareFamily(const CompareRequest& request) {
    return FamilyComparison(request).Run();
}

} // namespace corvane::commandline
