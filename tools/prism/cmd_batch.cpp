// prism batch: one command over many files, with a progress line per file.
#include "cli.h"

#include <chrono>
#include <cstdio>
#include <cstring>
#include <filesystem>
#include <string>
#include <system_error>

namespace fs = std::filesystem;

namespace {

// How many file names a command takes in front of its own arguments:
// 2 for "IN OUT ...", 1 for "IN ..." or "FILE...", 0 when it takes none we
// can fill in.
int FileSlots(const cli::Command& command) {
    const std::string usage = command.usage;
    if (usage.compare(0, 6, "IN OUT") == 0) return 2;
    if (usage.compare(0, 2, "IN") == 0 || usage.compare(0, 4, "FILE") == 0) return 1;
    return 0;
}

const cli::Command* FindCommand(const std::string& name) {
    for (const cli::Command& c : cli::Commands())
        if (name == c.name) return &c;
    return nullptr;
}

bool SameFile(const fs::path& a, const fs::path& b) {
    std::error_code error;
    return fs::exists(b, error) && fs::equivalent(a, b, error);
}

int Batch(const cli::Args& args) {
    std::string outDir, suffix, extension;
    size_t k = 0;
    for (; k < args.size(); ++k) {
        const std::string& a = args[k];
        if (a == "--out" || a == "--suffix" || a == "--ext") {
            if (k + 1 >= args.size()) return cli::Usage("batch");
            std::string& slot = a == "--out" ? outDir : a == "--suffix" ? suffix : extension;
            slot = args[++k];
        } else {
            break;
        }
    }
    if (k >= args.size()) return cli::Usage("batch");
    const cli::Command* command = FindCommand(args[k]);
    if (!command || std::strcmp(command->name, "batch") == 0) {
        std::fprintf(stderr, "prism: batch: '%s' is not a command that can run on files\n", args[k].c_str());
        return cli::kUsage;
    }
    // Results are BMP files, but PNG copies get their own extension.
    if (extension.empty()) extension = std::strcmp(command->name, "png") == 0 ? ".png" : ".bmp";
    const int slots = FileSlots(*command);
    if (slots == 0) {
        std::fprintf(stderr, "prism: batch: '%s' does not take an input file first\n", command->name);
        return cli::kUsage;
    }
    cli::Args opArgs, files;
    bool seenSeparator = false;
    for (++k; k < args.size(); ++k) {
        if (!seenSeparator && args[k] == "--")
            seenSeparator = true;
        else
            (seenSeparator ? files : opArgs).push_back(args[k]);
    }
    if (!seenSeparator || files.empty()) return cli::Usage("batch");
    if (slots == 2 && outDir.empty()) {
        std::fprintf(stderr, "prism: batch: '%s' writes a file per input; name a folder with --out DIR\n",
                     command->name);
        return cli::kUsage;
    }
    if (slots == 2) {
        std::error_code error;
        fs::create_directories(outDir, error);
        if (!fs::is_directory(outDir, error)) return cli::Fail(outDir + ": cannot make the folder");
    }

    int failed = 0;
    const size_t total = files.size();
    for (size_t i = 0; i < total; ++i) {
        const std::string& in = files[i];
        cli::Args callArgs{in};
        std::string out;
        if (slots == 2) {
            out = (fs::path(outDir) / (fs::path(in).stem().string() + suffix + extension)).string();
            if (SameFile(in, out)) {
                std::fprintf(stdout, "[%lu/%lu] %s ... skipped: the output would overwrite the input\n",
                         static_cast<unsigned long>(i + 1), static_cast<unsigned long>(total), in.c_str());
                ++failed;
                continue;
            }
            callArgs.push_back(out);
        }
        callArgs.insert(callArgs.end(), opArgs.begin(), opArgs.end());
        cli::SetCurrentFile(in);
        std::fflush(stdout);
        const auto t0 = std::chrono::steady_clock::now();
        const int rc = command->run(callArgs);
        const double ms = std::chrono::duration<double, std::milli>(std::chrono::steady_clock::now() - t0).count();
        std::fflush(stderr);
        if (rc == cli::kOk) {
            std::printf("[%lu/%lu] %s ... ok %.1f ms%s%s\n", static_cast<unsigned long>(i + 1),
                        static_cast<unsigned long>(total), in.c_str(), ms, out.empty() ? "" : " -> ", out.c_str());
        } else {
            ++failed;
            std::printf("[%lu/%lu] %s ... %s %.1f ms\n", static_cast<unsigned long>(i + 1),
                        static_cast<unsigned long>(total), in.c_str(),
                        rc == cli::kUsage ? "usage error" : "failed", ms);
            if (rc == cli::kUsage) {  // the same arguments will not suit the next file either
                std::fflush(stdout);
                return cli::kUsage;
            }
        }
    }
    std::printf("%lu files, %lu done, %d failed\n", static_cast<unsigned long>(total),
                static_cast<unsigned long>(total - static_cast<size_t>(failed)), failed);
    return failed ? cli::kFailed : cli::kOk;
}

}  // namespace

PRISM_COMMAND({"batch", "[--out DIR] [--suffix TEXT] [--ext .EXT] COMMAND [ARGS] -- FILES...",
               "Run one command on each file: IN (and OUT, named DIR/NAME+TEXT+.EXT, default .bmp, .png for png) are put in "
               "front of ARGS, e.g. prism batch --out small scale 400x300 --cubic -- *.bmp.",
               Batch});
