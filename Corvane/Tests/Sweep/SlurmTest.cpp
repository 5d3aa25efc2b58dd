// Faults sought: members that a killed task leaves half written or lost, a job that is submitted twice, a
// manifest that depends on who made the members, refusals of the batch system that are not told.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "Tests/Process.h"

namespace {

namespace fs = std::filesystem;
using ::testing::HasSubstr;

constexpr char kFamily[] =
    "\"$SYNTHEX\" sweep clip.synthex 'NAME/{rate}-{fields}.{codec}' --codec ffv1,prores "
    "--vary rate=24,25 --vary fields=progressive,upper --vary size=320x240 --vary frames=80 ";

std::string Sweep(const std::string& folder, const std::string& more = "") {
    std::string command = kFamily;
    return command.replace(command.find("NAME"), 4, folder) + more;
}

/// Runs a script of the shell beside a cluster of its own, in `folder`.
ProcessResult RunBesideCluster(const TestFolder& folder, const std::string& script) {
    ProcessOptions options;
    options.environment = {{"SYNTHEX", Synthex({}).front()}};
    return Process({SYNTHEX_SOURCE_DIR "/script/slurm-cluster", "bash", "-ec",
                    "cd '" + folder.Path().string() + "'\n" + script},
                   options)
        .Wait();
}

TEST(Slurm, AKilledTaskIsMadeAgainAndTheManifestIsThatOfOneMachine) {
    if (!fs::exists("/usr/sbin/slurmctld"))
        GTEST_SKIP() << "script/bootstrap cluster installs what this needs";
    const TestFolder folder;
    folder.Write("clip.synthex", SettingsText(R"(,"mRenderFormat":1)"));
    const ProcessResult result = RunBesideCluster(
        folder, Sweep("out", "--slurm --task-seconds 1 -- --no-such-option 2>refused || echo refused $?\n") +
                    Sweep("out", "--quiet --slurm --detach --task-seconds 0.3\n") +
                    "until ls out/.synthex-sweep/*.json; do sleep 0.02; done >/dev/null 2>&1\n"
                    "pkill -KILL -f \"plan $PWD\"\n" +
                    Sweep("out", "--quiet --slurm 2>failed || echo failed $?\n") +
                    "squeue --noheader --states=all --format=%F | sort -u | wc -l\n" +
                    Sweep("out", "--quiet --slurm\n") + Sweep("local", "--quiet\n") +
                    "\"$SYNTHEX\" sweep --check out --quiet\ncmp out/manifest.json local/manifest.json; ls "
                    "-A out | wc -l");
    EXPECT_EQ(result.status, 0) << result.err;
    EXPECT_THAT(ReadFile(folder / "refused"),
                ::testing::AllOf(HasSubstr("sbatch: "), HasSubstr("--no-such-option")));
    EXPECT_THAT(ReadFile(folder / "failed"),
                ::testing::AllOf(HasSubstr("were not made"), HasSubstr("task-")));
    // One job until then, and in the end the outputs, their settings and the manifest.
    EXPECT_EQ(result.out, "refused 1\nfailed 1\n1\n13\n");
}

} // namespace
