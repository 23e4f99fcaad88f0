// Loading and saving through the stand-in codec modules: the right module
// and entry, the arguments in their order, the module freed after each
// call, and one message per missing module or entry.
#include "formats/formats.h"
#include "formats/formats_test_util.h"

#include "core/errors.h"

#include <cctype>

#include <filesystem>

using namespace testing_support;
using namespace formats_test;

namespace {

// Replaces every occurrence of `from` in `text`.
void ReplaceAll(std::string& text, const std::string& from, const std::string& to) {
    for (size_t at = 0; (at = text.find(from, at)) != std::string::npos; at += to.size()) text.replace(at, from.size(), to);
}

// Names any other pointer ("0x" and hex digits) "ptr".
void NamePointers(std::string& text) {
    for (size_t at = 0; (at = text.find("0x", at)) != std::string::npos; at += 3) {
        size_t end = at + 2;
        while (end < text.size() && std::isxdigit(static_cast<unsigned char>(text[end]))) ++end;
        text.replace(at, end - at, "ptr");
    }
}

// The log with the given pointers named and any other pointer as "ptr".
std::vector<std::string> Calls(const CallLog& log, const void* dib, const void* status = nullptr) {
    std::vector<std::string> lines = log.Lines();
    for (std::string& line : lines) {
        if (dib) ReplaceAll(line, Hex(dib), "dib");
        if (status) ReplaceAll(line, Hex(status), "status");
        NamePointers(line);
    }
    return lines;
}

// One call: its module loaded, the call, the module freed.
std::vector<std::string> OneCall(const std::string& call) {
    const std::string module = call.substr(0, call.find('|'));
    return {module + "|load", call, module + "|unload"};
}

void ExpectMessages(const MessageRecorder& recorder, const std::vector<std::string>& texts) {
    ASSERT_EQ(recorder.messages().size(), texts.size());
    for (size_t i = 0; i < texts.size(); ++i) {
        EXPECT_EQ(recorder.messages()[i].text, texts[i]);
        EXPECT_EQ(recorder.messages()[i].caption, "PRISM-DLL");
        EXPECT_EQ(recorder.messages()[i].style, 0x2000u);
    }
}

// Every load row and a module's own failure: the call with its arguments
// and the handle returned last.  The page is an unsigned word with its top
// bit set, passed as it came.  Text, nothing recognised, and (in a build
// without device bitmaps) the metafile and clipboard rows call no module and
// are refused: code 9 and status 9.
TEST(LoadDispatch, EachFormatCallsItsEntryOnceAndFreesTheModule) {
    const struct {
        const char* name;
        Bytes bytes;
        std::string call;
        int statusAfter;  // -1: untouched
        int pixel;        // the stand-in's pixel byte: the page it was given; -1: no image
    } cases[] = {
        {"load.tif", {'I', 'I', 42, 0}, "ALDER32.DLL|LoadAlderIntoDIB|load.tif|2147483651|null|dib", -1, 3},
        {"load.pcx", {10, 5, 1, 8}, "BIRCH32.DLL|LoadBirchIntoDIB|load.pcx|status|dib", 77, 0},
        {"load.dcx", {0xB1, 0x68, 0xDE, 0x3A}, "BIRCH32.DLL|LoadBeechIntoDIB|load.dcx|2147483651|status|dib", 77, 3},
        {"load.gif", Text("GIF87a"), "CEDAR32.DLL|LoadCedarIntoDIB|load.gif|2147483651|status|dib", 77, 3},
        {"fail.gif", Text("GIF87a"), "CEDAR32.DLL|LoadCedarIntoDIB|fail.gif|2147483651|status|null", 55, -1},
        {"LOAD.TGA", {0, 0, 2, 0}, "ELDER32.DLL|LoadElderIntoDIB|LOAD.TGA|0|dib", -1, 0},
        {"load.cal", Text("srcdocid: X\n"), "ALDER32.DLL|LoadMapleIntoDIB|load.cal|0|dib", -1, 0},
        {"load.txt", Text("one\r\ntwo\r\n"), "", 9, -1},
        {"empty.bin", {}, "", 9, -1},
        {"byte.bin", {0}, "", 9, -1},
        {"gif89a.gif", Text("GIF89a"), "", 9, -1},
#ifndef _WIN32
        {"load.wmf", {0xD7, 0xCD, 0xC6, 0x9A}, "", 9, -1},
        {"load.clp", {0x50, 0xC3, 2, 0}, "", 9, -1},
#endif
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        NamedFile file(c.name, c.bytes);
        CallLog log;
        int status = -1;
        prism::LastImgError = 27;
        HDIB dib = LoadImageIntoDIB(file.path(), 0x80000003u, &status);
        EXPECT_EQ(Calls(log, dib, &status), c.call.empty() ? std::vector<std::string>() : OneCall(c.call));
        EXPECT_EQ(status, c.statusAfter);
        EXPECT_EQ(prism::LastImgError, c.statusAfter == 9 ? 9 : 27);  // only a refusal sets a code
        ASSERT_EQ(dib != nullptr, c.pixel >= 0);
        if (!dib) continue;
        // The block outlives the module and belongs to the host.
        Bytes bytes = BlockBytes(dib);
        ASSERT_EQ(bytes.size(), 52u);
        EXPECT_EQ(bytes[48], c.pixel);
        GlobalFree(dib);
    }
    int status = 0;
    prism::LastImgError = 0;
    EXPECT_EQ(LoadImageIntoDIB("no-such-image.bin", 1, &status), nullptr);
    EXPECT_EQ(prism::LastImgError, 9);
    EXPECT_EQ(status, 9);
}

// The library's own reader and writer, no module.
TEST(BmpRows, NeedNoModule) {
    ScratchFile file("bmp"), saved("save");
    file.Write(BmpFile(PackedDib({13, 5, 4})));
    CallLog log;
    int status = -1;
    HDIB dib = LoadImageIntoDIB(file.path(), 9, &status);
    HDIB direct = LoadDIBFromFile(file.path());
    ASSERT_NE(dib, nullptr);
    EXPECT_EQ(BlockBytes(dib), BlockBytes(direct));
    EXPECT_EQ(status, -1);
    EXPECT_EQ(SaveDIBInImageFormat(saved.path(), dib, 6, 1, 1), 1);
    EXPECT_EQ(saved.Read(), BmpFile(BlockBytes(dib)));
    EXPECT_TRUE(log.Lines().empty());
    prism::LastImgError = 0;
    EXPECT_EQ(SaveDIBInImageFormat(saved.path(), nullptr, 6, 0, 0), 0);
    EXPECT_EQ(prism::LastImgError, 8);
    GlobalFree(direct);
    GlobalFree(dib);
}

// One message per thunk (the DCX row tries to make the file, then to add
// a page); the code and status are left alone.
TEST(Dispatch, MissingModuleShowsOneMessagePerThunk) {
    HiddenModule load("ELDER32.DLL"), save("BIRCH.DLL");
    ASSERT_TRUE(load.moved && save.moved);
    NamedFile file("HIDDEN.TGA", {1, 2, 3});
    std::remove("nobirch.dcx");
    HDIB dib = BlockFrom(PackedDib({4, 4, 1}));
    int status = 123;
    prism::LastImgError = 27;
    MessageRecorder recorder;
    EXPECT_EQ(LoadImageIntoDIB(file.path(), 1, &status), nullptr);
    EXPECT_EQ(SaveDIBInImageFormat("nobirch.dcx", dib, 3, 0, 0), 0);
    EXPECT_EQ(SaveDIBInImageFormat("nobirch.pcx", dib, 2, 0, 0), 0);
    const std::string birch = "'BIRCH.DLL' module has not found (0)";
    ExpectMessages(recorder, {"'ELDER32.DLL' module has not found (0)", birch, birch, birch});
    EXPECT_EQ(status, 123);
    EXPECT_EQ(prism::LastImgError, 27);
    GlobalFree(dib);
}

TEST(CodecEntry, MissingEntryOrModule) {
    CallLog log;
    MessageRecorder recorder;
    plat::ModuleHandle module = nullptr;
    // A missing entry keeps the module for the caller to free.
    EXPECT_EQ(prism::LoadCodecEntry("ALDER32.DLL", "LoadBirchIntoDIB", &module), nullptr);
    ASSERT_NE(module, nullptr);
    prism::FreeCodecModule(module);
    prism::FreeCodecModule(nullptr);  // passed over
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{"ALDER32.DLL|load", "ALDER32.DLL|unload"}));
    // Entry names match exactly.
    EXPECT_EQ(prism::LoadCodecEntry("ALDER.DLL", "SaveDIBInMapleFormat", &module), nullptr);
    prism::FreeCodecModule(module);
    EXPECT_NE(prism::LoadCodecEntry("ALDER.DLL", "SAVEDIBINMAPLEFORMAT", &module), nullptr);
    prism::FreeCodecModule(module);
    // A missing module clears the handle; a name too long for the message
    // is cut, not overrun.
    module = &recorder;
    EXPECT_EQ(prism::LoadCodecEntry("NOSUCH32.DLL", "LoadAlderIntoDIB", &module), nullptr);
    EXPECT_EQ(module, nullptr);
    EXPECT_EQ(prism::LoadCodecEntry(std::string(300, 'Q').c_str(), "x", &module), nullptr);
    std::string cut = "'" + std::string(300, 'Q');
    ExpectMessages(recorder, {"'LoadBirchIntoDIB' function has not found in 'ALDER32.DLL' module",
                              "'SaveDIBInMapleFormat' function has not found in 'ALDER.DLL' module",
                              "'NOSUCH32.DLL' module has not found (0)", cut.substr(0, 119)});
}

// Every save row: the call ("ptr": a status pointer) and the entry's
// result passed on; codes that cannot be saved give 0 and touch nothing.
TEST(SaveDispatch, EachFormatCallsItsEntryAndPassesTheResultOn) {
    const struct {
        int format, option1, option2;
        std::string call;
        int result;
    } cases[] = {
        {1, 3, 9, "ALDER.DLL|SaveDIBInAlderFormat|saved.out|dib|9|1", 11},
        {2, 3, 9, "BIRCH.DLL|SaveDIBInBirchFormat|saved.out|dib|ptr", 12},
        {4, 3, 9, "CEDAR.DLL|SaveDIBInCedarFormat|saved.out|dib|3|ptr", 15},
        {5, 3, 7, "ELDER.DLL|SaveDIBInElderFormat|saved.out|dib|1|1", 16},  // second option as yes or no
        {5, 3, 0, "ELDER.DLL|SaveDIBInElderFormat|saved.out|dib|0|1", 16},
        {5, 0, -4, "ELDER.DLL|SaveDIBInElderFormat|saved.out|dib|1|1", 16},
        {12, 3, 9, "ALDER.DLL|SAVEDIBINMAPLEFORMAT|saved.out|dib|0|0|0", 17},
        {13, 3, 9, "HAZEL.DLL|SaveDIBInHazelFile|saved.out|dib|75", 18},  // fixed quality
        {-1, 1, 1, "", 0}, {0, 1, 1, "", 0},  {9, 1, 1, "", 0},
        {10, 1, 1, "", 0}, {11, 1, 1, "", 0}, {14, 1, 1, "", 0}, {1000, 1, 1, "", 0},
#ifndef _WIN32
        // Without device bitmaps there is no metafile or clipboard writer.
        {7, 1, 1, "", 0},  {8, 1, 1, "", 0},
#endif
    };
    HDIB dib = BlockFrom(PackedDib({4, 4, 1}));
    const SIZE_T size = GlobalSize(dib);
    for (const auto& c : cases) {
        SCOPED_TRACE(c.call + " " + std::to_string(c.format));
        std::remove("saved.out");
        CallLog log;
        prism::LastImgError = 27;
        EXPECT_EQ(SaveDIBInImageFormat("saved.out", dib, c.format, c.option1, c.option2), c.result);
        EXPECT_EQ(Calls(log, dib), c.call.empty() ? std::vector<std::string>() : OneCall(c.call));
        EXPECT_FALSE(std::filesystem::exists("saved.out"));  // the stand-ins make no file
        EXPECT_EQ(prism::LastImgError, 27);
        EXPECT_EQ(GlobalSize(dib), size);  // still the caller's
    }
    GlobalFree(dib);
}

TEST(SaveDispatch, DcxMakesOnlyANewFileAndSharesTheStatus) {
    std::remove("pages.dcx");
    HDIB dib = BlockFrom(PackedDib({4, 4, 1}));
    CallLog log;
    EXPECT_EQ(SaveDIBInImageFormat("pages.dcx", dib, 3, 0, 0), 14);
    std::vector<std::string> lines = log.Lines();
    ASSERT_EQ(lines.size(), 6u);
    const std::string status = lines[1].substr(lines[1].rfind('|'));  // one pointer for both calls
    EXPECT_EQ(Calls(log, dib), (std::vector<std::string>{"BIRCH.DLL|load", "BIRCH.DLL|MakeBeechFile|pages.dcx|ptr",
                                                         "BIRCH.DLL|unload", "BIRCH.DLL|load",
                                                         "BIRCH.DLL|SaveDIBInBeechFormat|pages.dcx|dib|ptr",
                                                         "BIRCH.DLL|unload"}));
    EXPECT_EQ(lines[4].substr(lines[4].rfind('|')), status);
    // With the file there, a page is added and nothing is made.
    NamedFile existing("pages.dcx", {});
    log.Clear();
    EXPECT_EQ(SaveDIBInImageFormat("pages.dcx", dib, 3, 0, 0), 14);
    EXPECT_EQ(Calls(log, dib), OneCall("BIRCH.DLL|SaveDIBInBeechFormat|pages.dcx|dib|ptr"));
    GlobalFree(dib);
}

}  // namespace
