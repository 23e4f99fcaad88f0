// prism: the library's command-line program.
#include "cli.h"

#include <algorithm>
#include <cstdio>
#include <cstring>

namespace {

void PrintHelp(FILE* to) {
    std::fprintf(to, "usage: prism COMMAND [ARGS]\n\ncommands:\n");
    std::vector<cli::Command> commands = cli::Commands();
    std::sort(commands.begin(), commands.end(),
              [](const cli::Command& a, const cli::Command& b) { return std::strcmp(a.name, b.name) < 0; });
    for (const cli::Command& c : commands)
        std::fprintf(to, "  %s %s\n      %s\n", c.name, c.usage, c.summary);
    std::fprintf(to, "\nprism COMMAND --help shows one command.\n"
                     "Exit codes: 0 done, 1 operation failed, 2 usage error.\n");
}

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        PrintHelp(stderr);
        return cli::kUsage;
    }
    std::string name = argv[1];
    if (name == "--help" || name == "-h" || name == "help") {
        PrintHelp(stdout);
        return cli::kOk;
    }
    for (const cli::Command& c : cli::Commands()) {
        if (name != c.name) continue;
        cli::Args args(argv + 2, argv + argc);
        if (std::find(args.begin(), args.end(), "--help") != args.end()) {
            std::printf("usage: prism %s %s\n  %s\n", c.name, c.usage, c.summary);
            return cli::kOk;
        }
        // Failures name the file a command works on.
        const std::string usage = c.usage;
        if (!args.empty() && (usage.compare(0, 2, "IN") == 0 || usage.compare(0, 4, "FILE") == 0 ||
                              usage.compare(0, 10, "DESCRIPTOR") == 0))
            cli::SetCurrentFile(args[0]);
        return c.run(args);
    }
    std::fprintf(stderr, "prism: unknown command '%s'\n", name.c_str());
    PrintHelp(stderr);
    return cli::kUsage;
}
