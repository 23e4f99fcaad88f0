// prism batch: how it names outputs, passes arguments, reports progress and
// chooses its exit code. The program's shared helpers and the batch command
// are compiled in here; a recording command stands in for a real one.
#include "../../tools/prism/cli.cpp"
#include "../../tools/prism/cmd_batch.cpp"

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

std::vector<cli::Args> calls;

// Fails for inputs whose name holds "bad"; answers a usage error to "usage".
int Record(const cli::Args& args) {
    calls.push_back(args);
    if (std::find(args.begin(), args.end(), "usage") != args.end()) return cli::kUsage;
    return args[0].find("bad") != std::string::npos ? cli::kFailed : cli::kOk;
}

PRISM_COMMAND({"record2", "IN OUT [ARGS]", "test: two file slots", Record});
PRISM_COMMAND({"record1", "IN [ARGS]", "test: one file slot", Record});
PRISM_COMMAND({"recordnone", "DESCRIPTOR", "test: no file slot", Record});

// Runs batch; the exit code, and its standard output in `out`.
int RunBatch(const cli::Args& args, std::string* out = nullptr) {
    calls.clear();
    const cli::Command* batch = FindCommand("batch");
    EXPECT_NE(batch, nullptr);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int code = batch ? batch->run(args) : -1;
    const std::string text = testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    if (out) *out = text;
    return code;
}

std::string Native(const std::string& path) { return std::filesystem::path(path).make_preferred().string(); }

TEST(PrismBatch, NamesOutputsPassesArgumentsAndReportsEachFile) {
    std::string out;
    EXPECT_EQ(RunBatch({"--out", "batch-out", "--suffix", "-s", "record2", "X", "--cubic", "--", "dir/a.bmp", "b.png"}, &out), cli::kOk);
    EXPECT_EQ(calls, (std::vector<cli::Args>{{"dir/a.bmp", Native("batch-out/a-s.bmp"), "X", "--cubic"},
                                             {"b.png", Native("batch-out/b-s.bmp"), "X", "--cubic"}}));
    EXPECT_TRUE(std::filesystem::is_directory("batch-out"));
    for (const char* line : {"[1/2] dir/a.bmp ... ok", "[2/2] b.png ... ok"}) EXPECT_NE(out.find(line), std::string::npos) << out;
    RunBatch({"--out", "batch-out", "--ext", ".dib", "record2", "--", "a.bmp"});
    EXPECT_EQ(calls, (std::vector<cli::Args>{{"a.bmp", Native("batch-out/a.dib")}}));
    std::filesystem::remove_all("batch-out");
    // A command that only reads needs no folder and gets the input alone; a
    // failed file does not stop the others but sets exit code 1.
    EXPECT_EQ(RunBatch({"record1", "--x", "3", "--", "a.bmp", "bad.bmp", "c.bmp"}, &out), cli::kFailed);
    EXPECT_EQ(calls, (std::vector<cli::Args>{{"a.bmp", "--x", "3"}, {"bad.bmp", "--x", "3"}, {"c.bmp", "--x", "3"}}));
    for (const char* line : {"[2/3] bad.bmp ... failed", "[3/3] c.bmp ... ok", "3 files, 2 done, 1 failed"})
        EXPECT_NE(out.find(line), std::string::npos) << out;
}

// Usage errors give exit code 2 and run nothing; a usage error of the
// command stops at once, as the next file would fare no better; an output
// that would overwrite its input is a failure of that file.
TEST(PrismBatch, UsageErrorsAndOverwritesStopBeforeTheCommand) {
    { std::ofstream("batch-same.bmp") << "x"; }
    const struct { cli::Args args; int code; size_t calls; } cases[] = {
        // nothing; no "--"; no files; an unknown command; batch itself
        {{}, cli::kUsage, 0}, {{"record1", "a.bmp"}, cli::kUsage, 0}, {{"record1", "--"}, cli::kUsage, 0},
        {{"no-such-command", "--", "a.bmp"}, cli::kUsage, 0}, {{"batch", "--", "a.bmp"}, cli::kUsage, 0},
        // a command of no input file; one that writes files, without --out; --out without its value
        {{"recordnone", "--", "a.bmp"}, cli::kUsage, 0}, {{"record2", "--", "a.bmp"}, cli::kUsage, 0}, {{"--out"}, cli::kUsage, 0},
        {{"record1", "usage", "--", "a.bmp", "b.bmp"}, cli::kUsage, 1},
        {{"--out", ".", "record2", "--", "batch-same.bmp"}, cli::kFailed, 0}};
    for (const auto& c : cases) {
        std::string out;
        EXPECT_EQ(RunBatch(c.args, &out), c.code) << ::testing::PrintToString(c.args);
        EXPECT_EQ(calls.size(), c.calls) << ::testing::PrintToString(c.args);
        EXPECT_TRUE(c.code != cli::kFailed || out.find("would overwrite the input") != std::string::npos) << out;
    }
    std::remove("batch-same.bmp");
}

TEST(PrismCli, FailureNamesTheCurrentFileOnce) {
    cli::SetCurrentFile("pic.bmp");
    testing::internal::CaptureStderr();
    EXPECT_EQ(cli::Fail("Invalid bit/pixel value"), cli::kFailed);
    EXPECT_EQ(cli::Fail("pic.bmp: Can't open file"), cli::kFailed);
    EXPECT_EQ(testing::internal::GetCapturedStderr(), "prism: pic.bmp: Invalid bit/pixel value\nprism: pic.bmp: Can't open file\n");
    cli::SetCurrentFile("");
}

}  // namespace
