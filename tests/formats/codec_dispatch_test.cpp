// Loading and saving through the stand-in codec modules: the right module
// and entry, the arguments in their order, the module freed after each
// call, and one message per missing module or entry.
#include "formats/formats.h"
#include "formats/formats_test_util.h"

#include "core/errors.h"

#include <gtest/gtest.h>

#include <ostream>

using namespace testing_support;
using namespace formats_test;

namespace {

std::vector<std::string> Split(const std::string& line) {
    std::vector<std::string> fields;
    std::string field;
    for (char c : line) {
        if (c == '|') {
            fields.push_back(field);
            field.clear();
        } else {
            field += c;
        }
    }
    fields.push_back(field);
    return fields;
}

// The log of one call: the module loaded, one entry called, the module
// freed.  Returns the call's line.
std::string OneCall(const CallLog& log, const std::string& module) {
    std::vector<std::string> lines = log.Lines();
    EXPECT_EQ(lines.size(), 3u);
    if (lines.size() != 3) return std::string();
    EXPECT_EQ(lines[0], module + "|load");
    EXPECT_EQ(lines[2], module + "|unload");
    return lines[1];
}

// ---- load side ------------------------------------------------------------------

struct LoadCase {
    const char* what;
    const char* name;
    Bytes bytes;
    const char* module;
    const char* entry;
    // Fields after the file name; "%status" stands for the host's status
    // pointer, and the returned handle follows as "->0x...".
    std::vector<std::string> args;
    int statusAfter;  // -1: untouched
    int pixel;        // the stand-in's pixel byte: the page it was given
};
void PrintTo(const LoadCase& c, std::ostream* os) { *os << c.what; }

class LoadRow : public ::testing::TestWithParam<LoadCase> {};

TEST_P(LoadRow, CallsItsEntryOnceAndFreesTheModule) {
    const LoadCase& c = GetParam();
    NamedFile file(c.name, c.bytes);
    CallLog log;
    int status = -1;
    prism::LastImgError = 27;
    HDIB dib = LoadImageIntoDIB(file.path(), 3, &status);
    ASSERT_NE(dib, nullptr) << c.what;
    std::vector<std::string> expected = {c.module, c.entry, c.name};
    for (const std::string& a : c.args) expected.push_back(a == "%status" ? Hex(&status) : a);
    expected.push_back("->" + Hex(dib));  // returned as the module made it
    EXPECT_EQ(Split(OneCall(log, c.module)), expected) << c.what;
    EXPECT_EQ(status, c.statusAfter) << c.what;
    EXPECT_EQ(prism::LastImgError, 27) << c.what;
    // The block outlives the module and belongs to the host.
    Bytes bytes = BlockBytes(dib);
    ASSERT_EQ(bytes.size(), 52u);
    EXPECT_EQ(bytes[48], c.pixel);
    GlobalFree(dib);
}

INSTANTIATE_TEST_SUITE_P(
    Codecs, LoadRow,
    ::testing::Values(
        LoadCase{"tiff: page and no status", "load.tif", {'I', 'I', 42, 0}, "ALDER32.DLL", "LoadAlderIntoDIB",
                 {"3", "null"}, -1, 3},
        LoadCase{"pcx: status only", "load.pcx", {10, 5, 1, 8}, "BIRCH32.DLL", "LoadBirchIntoDIB",
                 {"%status"}, 77, 0},
        LoadCase{"dcx: page and status", "load.dcx", {0xB1, 0x68, 0xDE, 0x3A}, "BIRCH32.DLL",
                 "LoadBeechIntoDIB", {"3", "%status"}, 77, 3},
        LoadCase{"gif: page and status", "load.gif", Text("GIF87a"), "CEDAR32.DLL", "LoadCedarIntoDIB",
                 {"3", "%status"}, 77, 3},
        LoadCase{"tga: by name, 0", "LOAD.TGA", {0, 0, 2, 0}, "ELDER32.DLL", "LoadElderIntoDIB", {"0"}, -1, 0},
        LoadCase{"cals: 0", "load.cal", Text("srcdocid: X\n"), "ALDER32.DLL", "LoadMapleIntoDIB", {"0"}, -1, 0}),
    [](const ::testing::TestParamInfo<LoadCase>& info) { return "row" + std::to_string(info.index); });

TEST(LoadDispatch, ModuleIsLoadedAnewForEveryCall) {
    NamedFile file("twice.tif", {'I', 'I', 42, 0});
    CallLog log;
    int status = 0;
    for (UINT page : {1u, 0xFFFFFFFFu}) {
        HDIB dib = LoadImageIntoDIB(file.path(), page, &status);
        ASSERT_NE(dib, nullptr);
        GlobalFree(dib);
    }
    std::vector<std::string> lines = log.Lines();
    ASSERT_EQ(lines.size(), 6u);
    EXPECT_EQ(lines[3], "ALDER32.DLL|load");
    // The page is an unsigned 32-bit word, passed as it came.
    EXPECT_EQ(Split(lines[4])[3], "4294967295");
    EXPECT_EQ(lines[5], "ALDER32.DLL|unload");
}

TEST(LoadDispatch, FailingEntryGivesZeroAndItsOwnStatus) {
    NamedFile file("fail.gif", Text("GIF87a"));
    CallLog log;
    int status = 0;
    prism::LastImgError = 27;
    EXPECT_EQ(LoadImageIntoDIB(file.path(), 1, &status), nullptr);
    EXPECT_EQ(status, 55);
    EXPECT_EQ(prism::LastImgError, 27);
    EXPECT_EQ(log.Lines().size(), 3u);
}

TEST(LoadDispatch, BmpNeedsNoModule) {
    Bytes packed = PackedDib({13, 5, 4});
    ScratchFile file("bmp");
    file.Write(BmpFile(packed));
    CallLog log;
    int status = -1;
    HDIB dib = LoadImageIntoDIB(file.path(), 9, &status);
    ASSERT_NE(dib, nullptr);
    HDIB direct = LoadDIBFromFile(file.path());
    EXPECT_EQ(BlockBytes(dib), BlockBytes(direct));
    EXPECT_EQ(PixelAt(BlockBytes(dib), 12, 4), PixelAt(packed, 12, 4));
    GlobalFree(direct);
    EXPECT_EQ(status, -1);
    EXPECT_TRUE(log.Lines().empty());
    GlobalFree(dib);
}

struct RefusedCase {
    const char* what;
    Bytes bytes;
};
void PrintTo(const RefusedCase& c, std::ostream* os) { *os << c.what; }

class Refused : public ::testing::TestWithParam<RefusedCase> {};

// Text, nothing recognised, and (in a build without device bitmaps) the
// metafile and clipboard rows: code 9 and status 9.
TEST_P(Refused, CodeNineAndStatusNine) {
    ScratchFile file("refused");
    file.Write(GetParam().bytes);
    CallLog log;
    int status = 0;
    prism::LastImgError = 0;
    EXPECT_EQ(LoadImageIntoDIB(file.path(), 1, &status), nullptr);
    EXPECT_EQ(prism::LastImgError, 9);
    EXPECT_EQ(status, 9);
    EXPECT_TRUE(log.Lines().empty());
}

INSTANTIATE_TEST_SUITE_P(Formats, Refused,
                         ::testing::Values(RefusedCase{"text", Text("one\r\ntwo\r\n")},
                                           RefusedCase{"empty", {}}, RefusedCase{"one byte", {0}},
                                           RefusedCase{"gif89a", Text("GIF89a")},
                                           RefusedCase{"metafile", {0xD7, 0xCD, 0xC6, 0x9A}},
                                           RefusedCase{"clipboard", {0x50, 0xC3, 2, 0}}));

TEST(LoadDispatch, MissingFileIsRefusedWithCodeNine) {
    int status = 0;
    EXPECT_EQ(LoadImageIntoDIB("no-such-image.bin", 1, &status), nullptr);
    EXPECT_EQ(prism::LastImgError, 9);
    EXPECT_EQ(status, 9);
}

TEST(LoadDispatch, MissingModuleShowsOneMessageAndLeavesCodeAndStatus) {
    HiddenModule hidden("ELDER32.DLL");
    ASSERT_TRUE(hidden.moved());
    NamedFile file("HIDDEN.TGA", {1, 2, 3});
    int status = 123;
    prism::LastImgError = 27;
    MessageRecorder recorder;
    EXPECT_EQ(LoadImageIntoDIB(file.path(), 1, &status), nullptr);
    ASSERT_EQ(recorder.messages().size(), 1u);
    EXPECT_EQ(recorder.messages()[0].text, "'ELDER32.DLL' module has not found (0)");
    EXPECT_EQ(recorder.messages()[0].caption, "PRISM-DLL");
    EXPECT_EQ(recorder.messages()[0].style, 0x2000u);
    EXPECT_EQ(status, 123);
    EXPECT_EQ(prism::LastImgError, 27);
}

TEST(CodecEntry, MissingEntryKeepsTheModuleForTheCallerToFree) {
    CallLog log;
    MessageRecorder recorder;
    plat::ModuleHandle module = nullptr;
    EXPECT_EQ(prism::LoadCodecEntry("ALDER32.DLL", "LoadBirchIntoDIB", &module), nullptr);
    ASSERT_NE(module, nullptr);
    ASSERT_EQ(recorder.messages().size(), 1u);
    EXPECT_EQ(recorder.messages()[0].text, "'LoadBirchIntoDIB' function has not found in 'ALDER32.DLL' module");
    EXPECT_EQ(recorder.messages()[0].caption, "PRISM-DLL");
    EXPECT_EQ(recorder.messages()[0].style, 0x2000u);
    prism::FreeCodecModule(module);
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{"ALDER32.DLL|load", "ALDER32.DLL|unload"}));
    prism::FreeCodecModule(nullptr);  // passed over
}

TEST(CodecEntry, EntryNamesMatchExactly) {
    MessageRecorder recorder;
    plat::ModuleHandle module = nullptr;
    EXPECT_EQ(prism::LoadCodecEntry("ALDER.DLL", "SaveDIBInMapleFormat", &module), nullptr);
    prism::FreeCodecModule(module);
    EXPECT_NE(prism::LoadCodecEntry("ALDER.DLL", "SAVEDIBINMAPLEFORMAT", &module), nullptr);
    prism::FreeCodecModule(module);
    EXPECT_EQ(recorder.messages().size(), 1u);
}

TEST(CodecEntry, MissingModuleClearsTheHandle) {
    MessageRecorder recorder;
    plat::ModuleHandle module = &recorder;  // anything but 0
    EXPECT_EQ(prism::LoadCodecEntry("NOSUCH32.DLL", "LoadAlderIntoDIB", &module), nullptr);
    EXPECT_EQ(module, nullptr);
    ASSERT_EQ(recorder.messages().size(), 1u);
    EXPECT_EQ(recorder.messages()[0].text, "'NOSUCH32.DLL' module has not found (0)");
    // A name too long for the message is cut, not overrun.
    std::string longName(300, 'Q');
    EXPECT_EQ(prism::LoadCodecEntry(longName.c_str(), "x", &module), nullptr);
    ASSERT_EQ(recorder.messages().size(), 2u);
    EXPECT_EQ(recorder.messages()[1].text.size(), 119u);
}

// ---- save side ------------------------------------------------------------------

struct SaveCase {
    const char* what;
    int format;
    int option1, option2;
    const char* module;
    const char* entry;
    std::vector<std::string> args;  // after name and handle; "%nonnull": a status pointer
    int result;
};
void PrintTo(const SaveCase& c, std::ostream* os) { *os << c.what; }

class SaveRow : public ::testing::TestWithParam<SaveCase> {};

TEST_P(SaveRow, CallsItsEntryAndPassesTheResultOn) {
    const SaveCase& c = GetParam();
    HDIB dib = BlockFrom(PackedDib({4, 4, 1}));
    const SIZE_T size = GlobalSize(dib);
    CallLog log;
    prism::LastImgError = 27;
    EXPECT_EQ(SaveDIBInImageFormat("saved.out", dib, c.format, c.option1, c.option2), c.result) << c.what;
    std::vector<std::string> fields = Split(OneCall(log, c.module));
    std::vector<std::string> expected = {c.module, c.entry, "saved.out", Hex(dib)};
    for (const std::string& a : c.args) expected.push_back(a);
    ASSERT_EQ(fields.size(), expected.size()) << c.what;
    for (size_t i = 0; i < fields.size(); ++i) {
        if (expected[i] == "%nonnull") {
            EXPECT_NE(fields[i], "null") << c.what;
        } else {
            EXPECT_EQ(fields[i], expected[i]) << c.what << " field " << i;
        }
    }
    EXPECT_EQ(prism::LastImgError, 27);
    EXPECT_EQ(GlobalSize(dib), size);  // still the caller's
    GlobalFree(dib);
}

INSTANTIATE_TEST_SUITE_P(
    Codecs, SaveRow,
    ::testing::Values(
        SaveCase{"tiff: second option, 1", 1, 3, 9, "ALDER.DLL", "SaveDIBInAlderFormat", {"9", "1"}, 11},
        SaveCase{"pcx: status", 2, 3, 9, "BIRCH.DLL", "SaveDIBInBirchFormat", {"%nonnull"}, 12},
        SaveCase{"gif: first option, status", 4, 3, 9, "CEDAR.DLL", "SaveDIBInCedarFormat", {"3", "%nonnull"}, 15},
        SaveCase{"tga: second option as yes", 5, 3, 7, "ELDER.DLL", "SaveDIBInElderFormat", {"1", "1"}, 16},
        SaveCase{"tga: second option as no", 5, 3, 0, "ELDER.DLL", "SaveDIBInElderFormat", {"0", "1"}, 16},
        SaveCase{"tga: negative is yes", 5, 0, -4, "ELDER.DLL", "SaveDIBInElderFormat", {"1", "1"}, 16},
        SaveCase{"cals: three zeros", 12, 3, 9, "ALDER.DLL", "SAVEDIBINMAPLEFORMAT", {"0", "0", "0"}, 17},
        SaveCase{"jpeg: quality 75", 13, 3, 9, "HAZEL.DLL", "SaveDIBInHazelFile", {"75"}, 18}),
    [](const ::testing::TestParamInfo<SaveCase>& info) { return "row" + std::to_string(info.index); });

TEST(SaveDispatch, DcxCreatesOnlyANewFileAndSharesTheStatus) {
    std::remove("pages.dcx");
    HDIB dib = BlockFrom(PackedDib({4, 4, 1}));
    CallLog log;
    EXPECT_EQ(SaveDIBInImageFormat("pages.dcx", dib, 3, 0, 0), 14);
    std::vector<std::string> lines = log.Lines();
    ASSERT_EQ(lines.size(), 6u);
    std::vector<std::string> make = Split(lines[1]), add = Split(lines[4]);
    EXPECT_EQ(make, (std::vector<std::string>{"BIRCH.DLL", "MakeBeechFile", "pages.dcx", make[3]}));
    EXPECT_EQ(lines[2], "BIRCH.DLL|unload");
    EXPECT_EQ(add, (std::vector<std::string>{"BIRCH.DLL", "SaveDIBInBeechFormat", "pages.dcx", Hex(dib), make[3]}));
    EXPECT_NE(make[3], "null");

    // The file exists now: a page is added, nothing is made.
    log.Clear();
    EXPECT_EQ(SaveDIBInImageFormat("pages.dcx", dib, 3, 0, 0), 14);
    EXPECT_EQ(Split(OneCall(log, "BIRCH.DLL"))[1], "SaveDIBInBeechFormat");
    std::remove("pages.dcx");
    GlobalFree(dib);
}

TEST(SaveDispatch, BmpGoesThroughSaveDib) {
    Bytes packed = PackedDib({7, 3, 4});
    HDIB dib = BlockFrom(packed);
    ScratchFile file("save");
    CallLog log;
    EXPECT_EQ(SaveDIBInImageFormat(file.path(), dib, 6, 1, 1), 1);
    EXPECT_EQ(file.Read(), BmpFile(packed));
    EXPECT_TRUE(log.Lines().empty());
    prism::LastImgError = 0;
    EXPECT_EQ(SaveDIBInImageFormat(file.path(), nullptr, 6, 0, 0), 0);
    EXPECT_EQ(prism::LastImgError, 8);
    GlobalFree(dib);
}

TEST(SaveDispatch, CodesThatCannotBeSavedGiveZeroAndNoCode) {
    HDIB dib = BlockFrom(PackedDib({4, 4, 1}));
    CallLog log;
    prism::LastImgError = 27;
    for (int format : {-1, 0, 7, 8, 9, 10, 11, 14, 1000}) {
        EXPECT_EQ(SaveDIBInImageFormat("never.out", dib, format, 1, 1), 0) << format;
        EXPECT_FALSE(std::filesystem::exists("never.out")) << format;
    }
    EXPECT_EQ(prism::LastImgError, 27);
    EXPECT_TRUE(log.Lines().empty());
    GlobalFree(dib);
}

TEST(SaveDispatch, MissingModuleGivesOneMessagePerThunk) {
    std::remove("nobirch.dcx");
    HiddenModule hidden("BIRCH.DLL");
    ASSERT_TRUE(hidden.moved());
    HDIB dib = BlockFrom(PackedDib({4, 4, 1}));
    prism::LastImgError = 27;
    MessageRecorder recorder;
    EXPECT_EQ(SaveDIBInImageFormat("nobirch.dcx", dib, 3, 0, 0), 0);
    ASSERT_EQ(recorder.messages().size(), 2u);
    EXPECT_EQ(recorder.messages()[0].text, "'BIRCH.DLL' module has not found (0)");
    EXPECT_EQ(recorder.messages()[1].text, "'BIRCH.DLL' module has not found (0)");
    EXPECT_EQ(SaveDIBInImageFormat("nobirch.pcx", dib, 2, 0, 0), 0);
    EXPECT_EQ(recorder.messages().size(), 3u);
    EXPECT_EQ(prism::LastImgError, 27);
    GlobalFree(dib);
}

}  // namespace
