// prism batch: how it names outputs, passes arguments, reports progress and
// chooses its exit code. The program's shared helpers and the batch command
// are compiled in here; a recording command stands in for a real one.
#include "../../tools/prism/cli.cpp"
#include "../../tools/prism/cmd_batch.cpp"

#include <gtest/gtest.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <string>
#include <vector>

namespace {

std::vector<cli::Args>& Calls() {
    static std::vector<cli::Args> calls;
    return calls;
}

// Fails for inputs whose name holds "bad"; answers a usage error to "usage".
int Record(const cli::Args& args) {
    Calls().push_back(args);
    for (const std::string& a : args)
        if (a == "usage") return cli::kUsage;
    return args[0].find("bad") != std::string::npos ? cli::kFailed : cli::kOk;
}

PRISM_COMMAND({"record2", "IN OUT [ARGS]", "test: two file slots", Record});
PRISM_COMMAND({"record1", "IN [ARGS]", "test: one file slot", Record});
PRISM_COMMAND({"recordnone", "DESCRIPTOR", "test: no file slot", Record});

struct BatchRun {
    int code;
    std::string out;
};

BatchRun RunBatch(const cli::Args& args) {
    Calls().clear();
    const cli::Command* batch = FindCommand("batch");
    EXPECT_NE(batch, nullptr);
    testing::internal::CaptureStdout();
    testing::internal::CaptureStderr();
    const int code = batch ? batch->run(args) : -1;
    std::string out = testing::internal::GetCapturedStdout();
    testing::internal::GetCapturedStderr();
    return {code, out};
}

std::string Native(const std::string& path) { return std::filesystem::path(path).make_preferred().string(); }

TEST(PrismBatch, NamesOutputsPassesArgumentsAndReportsEachFile) {
    BatchRun r = RunBatch({"--out", "batch-out", "--suffix", "-s", "record2", "X", "--cubic", "--", "dir/a.bmp", "b.png"});
    EXPECT_EQ(r.code, cli::kOk);
    EXPECT_EQ(Calls(), (std::vector<cli::Args>{{"dir/a.bmp", Native("batch-out/a-s.bmp"), "X", "--cubic"},
                                               {"b.png", Native("batch-out/b-s.bmp"), "X", "--cubic"}}));
    EXPECT_TRUE(std::filesystem::is_directory("batch-out"));
    for (const char* line : {"[1/2] dir/a.bmp ... ok", "[2/2] b.png ... ok"}) EXPECT_NE(r.out.find(line), std::string::npos) << r.out;
    r = RunBatch({"--out", "batch-out", "--ext", ".dib", "record2", "--", "a.bmp"});
    EXPECT_EQ(Calls(), (std::vector<cli::Args>{{"a.bmp", Native("batch-out/a.dib")}}));
    std::filesystem::remove_all("batch-out");
    // A command that only reads needs no folder and gets the input alone; a
    // failed file does not stop the others but sets exit code 1.
    r = RunBatch({"record1", "--x", "3", "--", "a.bmp", "bad.bmp", "c.bmp"});
    EXPECT_EQ(r.code, cli::kFailed);
    ASSERT_EQ(Calls().size(), 3u);
    EXPECT_EQ(Calls()[2], (cli::Args{"c.bmp", "--x", "3"}));
    for (const char* line : {"[2/3] bad.bmp ... failed", "[3/3] c.bmp ... ok", "3 files, 2 done, 1 failed"})
        EXPECT_NE(r.out.find(line), std::string::npos) << r.out;
}

TEST(PrismBatch, UsageErrorsGiveExitCode2) {
    const std::vector<cli::Args> wrong = {
        {},                                          // nothing
        {"record1", "a.bmp"},                        // no "--"
        {"record1", "--"},                           // no files
        {"no-such-command", "--", "a.bmp"},          // unknown command
        {"batch", "--", "a.bmp"},                    // itself
        {"recordnone", "--", "a.bmp"},               // takes no input file
        {"record2", "--", "a.bmp"},                  // writes files but no --out
        {"--out"},                                   // option without its value
    };
    for (const cli::Args& args : wrong) {
        BatchRun r = RunBatch(args);
        EXPECT_EQ(r.code, cli::kUsage) << (args.empty() ? "(none)" : args[0]);
        EXPECT_TRUE(Calls().empty()) << (args.empty() ? "(none)" : args[0]);
    }
    // The same arguments would not suit the next file either: stop at once.
    BatchRun r = RunBatch({"record1", "usage", "--", "a.bmp", "b.bmp"});
    EXPECT_EQ(r.code, cli::kUsage);
    EXPECT_EQ(Calls().size(), 1u);
}

TEST(PrismBatch, NeverWritesOverItsInput) {
    { std::ofstream("batch-same.bmp") << "x"; }
    BatchRun r = RunBatch({"--out", ".", "record2", "--", "batch-same.bmp"});
    EXPECT_EQ(r.code, cli::kFailed);
    EXPECT_TRUE(Calls().empty());
    EXPECT_NE(r.out.find("would overwrite the input"), std::string::npos) << r.out;
    std::remove("batch-same.bmp");
}

TEST(PrismCli, FailureNamesTheCurrentFileOnce) {
    cli::SetCurrentFile("pic.bmp");
    testing::internal::CaptureStderr();
    EXPECT_EQ(cli::Fail("Invalid bit/pixel value"), cli::kFailed);
    EXPECT_EQ(cli::Fail("pic.bmp: Can't open file"), cli::kFailed);
    const std::string err = testing::internal::GetCapturedStderr();
    EXPECT_EQ(err, "prism: pic.bmp: Invalid bit/pixel value\nprism: pic.bmp: Can't open file\n");
    cli::SetCurrentFile("");
}

}  // namespace
