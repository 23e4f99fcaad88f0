// The prism command-line program: a table of commands, each in the file of
// its family, and the helpers they share.
#pragma once

#include "prism32.h"

#include <string>
#include <vector>

namespace cli {

// Exit codes: 0 done, 1 the operation failed, 2 the command line was wrong.
constexpr int kOk = 0;
constexpr int kFailed = 1;
constexpr int kUsage = 2;

using Args = std::vector<std::string>;

struct Command {
    const char* name;
    const char* usage;    // arguments, e.g. "IN OUT [--format N]"
    const char* summary;  // one line
    int (*run)(const Args& args);  // args after the command name
};

// Adds a command to the table; called from static registrars.
bool Register(const Command& command);
const std::vector<Command>& Commands();

// Prints "prism: MESSAGE" on stderr and returns kFailed. When MESSAGE does
// not name the file the command is working on, it is prefixed with it:
// "prism: FILE: MESSAGE".
int Fail(const std::string& message);
// The file the current command loaded last (empty before any).
const std::string& CurrentFile();
void SetCurrentFile(const std::string& path);
// Prints the command's usage on stderr and returns kUsage.
int Usage(const Command& command);
int Usage(const char* name);

// The library's text for its current error.
std::string LibraryError();

// Loads an image file, or prints "prism: FILE: <library error>" and
// returns 0.
HDIB LoadImageFile(const std::string& path);
// Saves as BMP; prints the library's error and returns false on failure.
bool SaveImageFile(const std::string& path, HDIB dib);

// Parses a whole decimal number; false when the text is not one.
bool ParseInt(const std::string& text, int* value);

// Describes an image in one line: size, depth, colours, compression.
std::string Describe(HDIB dib);

// Holds an image for a scope and frees it at the end.
class Image {
public:
    explicit Image(HDIB dib = nullptr) : dib_(dib) {}
    ~Image() { reset(); }
    Image(const Image&) = delete;
    Image& operator=(const Image&) = delete;
    HDIB get() const { return dib_; }
    explicit operator bool() const { return dib_ != nullptr; }
    void reset(HDIB dib = nullptr) {
        if (dib_ && dib_ != dib) GlobalFree(dib_);
        dib_ = dib;
    }

private:
    HDIB dib_;
};

}  // namespace cli

#define PRISM_CLI_CONCAT2(a, b) a##b
#define PRISM_CLI_CONCAT(a, b) PRISM_CLI_CONCAT2(a, b)
// Registers a command at start-up: PRISM_COMMAND({"name", "ARGS", "summary", Fn});
#define PRISM_COMMAND(...) \
    static const bool PRISM_CLI_CONCAT(prism_command_, __LINE__) = ::cli::Register(__VA_ARGS__)
