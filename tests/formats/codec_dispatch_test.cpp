// Loading and saving through the stand-in codec modules: the right module
// and entry, the arguments in their order, the module freed after each
// call, and one message per missing module or entry.
#include "formats/formats.h"
#include "formats/formats_test_util.h"

#include "core/errors.h"

#include <filesystem>

using namespace testing_support;
using namespace formats_test;

namespace {

// The log with the given pointers named and any other pointer as "ptr"
// (a null pointer is logged as "null", never as its digits).
std::vector<std::string> Calls(const CallLog& log, const void* dib, const void* status = nullptr) {
    std::vector<std::string> lines = log.Lines();
    for (std::string& line : lines)
        for (size_t at = line.find("0x"); at != std::string::npos; at = line.find("0x", at + 1)) {
            const size_t end = line.find_first_not_of("0123456789abcdef", at + 2);
            const std::string token = line.substr(at, end - at);
            line.replace(at, token.size(), token == Hex(dib) ? "dib" : token == Hex(status) ? "status" : "ptr");
        }
    return lines;
}

// Each call: its module loaded, the call, the module freed.
std::vector<std::string> Each(std::initializer_list<std::string> calls) {
    std::vector<std::string> lines;
    for (const std::string& call : calls) lines.insert(lines.end(), {call.substr(0, call.find('|')) + "|load", call, call.substr(0, call.find('|')) + "|unload"});
    return lines;
}

// The messages' texts; every message is an error box of the library's caption.
std::vector<std::string> Messages(const MessageRecorder& recorder) {
    std::vector<std::string> texts;
    for (const auto& m : recorder.messages()) { texts.push_back(m.text); EXPECT_EQ(m.caption + std::to_string(m.style), "PRISM-DLL8192"); }
    return texts;
}

// Every load row and a module's own failure: the call with its arguments
// and the handle returned last.  The page is an unsigned word with its top
// bit set, passed as it came.  Text, nothing recognised, and (in a build
// without device bitmaps) the metafile and clipboard rows call no module and
// are refused: code 9 and status 9.  The BMP row is the library's own
// reader, no module.
TEST(LoadDispatch, EachFormatCallsItsEntryOnceAndFreesTheModule) {
    const NamedFile bmp("direct.bmp", BmpFile(PackedDib({13, 5, 4})));
    const Bytes direct = Take(LoadDIBFromFile(bmp.path()));  // as the library's own reader reads it
    // statusAfter -1: untouched; image: the stand-in's 8 x 1 row, whose pixel byte is the page it was given.
    const struct { const char* name; Bytes bytes; std::vector<std::string> calls; int statusAfter; Bytes image; } cases[] = {
        {"load.tif", {'I', 'I', 42, 0}, Each({"ALDER32.DLL|LoadAlderIntoDIB|load.tif|2147483651|null|dib"}), -1, {3, 0, 0, 0}},
        {"load.pcx", {10, 5, 1, 8}, Each({"BIRCH32.DLL|LoadBirchIntoDIB|load.pcx|status|dib"}), 77, {0, 0, 0, 0}},
        {"load.dcx", {0xB1, 0x68, 0xDE, 0x3A}, Each({"BIRCH32.DLL|LoadBeechIntoDIB|load.dcx|2147483651|status|dib"}), 77, {3, 0, 0, 0}},
        {"load.gif", Text("GIF87a"), Each({"CEDAR32.DLL|LoadCedarIntoDIB|load.gif|2147483651|status|dib"}), 77, {3, 0, 0, 0}},
        {"fail.gif", Text("GIF87a"), Each({"CEDAR32.DLL|LoadCedarIntoDIB|fail.gif|2147483651|status|null"}), 55, {}},
        {"LOAD.TGA", {0, 0, 2, 0}, Each({"ELDER32.DLL|LoadElderIntoDIB|LOAD.TGA|0|dib"}), -1, {0, 0, 0, 0}},
        {"load.cal", Text("srcdocid: X\n"), Each({"ALDER32.DLL|LoadMapleIntoDIB|load.cal|0|dib"}), -1, {0, 0, 0, 0}},
        {"load.bmp", ReadFile(bmp.name), {}, -1, direct},
        {"pages.ini", Text("[ColorFax]\r\nTotalPages=2\r\n"), {}, -1, {}},  // the page turns negative: out of range
        {"load.txt", Text("one\r\ntwo\r\n"), {}, 9, {}}, {"empty.bin", {}, {}, 9, {}}, {"gif89a.gif", Text("GIF89a"), {}, 9, {}},
#ifndef _WIN32
        {"load.wmf", {0xD7, 0xCD, 0xC6, 0x9A}, {}, 9, {}}, {"load.clp", {0x50, 0xC3, 2, 0}, {}, 9, {}},
#endif
    };
    for (const auto& c : cases) {
        SCOPED_TRACE(c.name);
        NamedFile file(c.name, c.bytes);
        CallLog log;
        int status = -1;
        prism::LastImgError = 27;
        HDIB dib = LoadImageIntoDIB(file.path(), 0x80000003u, &status);
        EXPECT_EQ(Calls(log, dib, &status), c.calls);
        EXPECT_EQ(status, c.statusAfter);
        EXPECT_EQ(prism::LastImgError, c.statusAfter == 9 ? 9 : 27);  // only a refusal sets a code
        // The block outlives the module and belongs to the host.
        const Bytes image = Take(dib);
        EXPECT_EQ(image.size() == 52 ? Bytes(image.begin() + 48, image.end()) : image, c.image);
    }
}

// One message per thunk (the DCX row tries to make the file, then to add
// a page); the code and status are left alone.  A missing entry keeps the
// module for the caller to free; entry names match exactly.  A missing
// module clears the handle; a name too long for the message is cut, not
// overrun.
TEST(CodecEntry, MissingModuleOrEntryShowsOneMessageEach) {
    HiddenModule load("ELDER32.DLL"), save("BIRCH.DLL");
    ASSERT_TRUE(load.moved && save.moved);
    NamedFile file("HIDDEN.TGA", {1, 2, 3});
    std::remove("nobirch.dcx");
    HDIB dib = BlockFrom(PackedDib({4, 4, 1}));
    int status = 123;
    prism::LastImgError = 27;
    MessageRecorder recorder;
    EXPECT_EQ(LoadImageIntoDIB(file.path(), 1, &status), nullptr);
    EXPECT_EQ(SaveDIBInImageFormat("nobirch.dcx", dib, 3, 0, 0) + SaveDIBInImageFormat("nobirch.pcx", dib, 2, 0, 0), 0);
    EXPECT_EQ(std::pair(prism::LastImgError, status), std::pair(27, 123));
    GlobalFree(dib);
    CallLog log;
    plat::ModuleHandle module = nullptr;
    EXPECT_EQ(prism::LoadCodecEntry("ALDER32.DLL", "LoadOakIntoDIB", &module), nullptr);
    ASSERT_NE(module, nullptr);
    prism::FreeCodecModule(module);
    prism::FreeCodecModule(nullptr);  // passed over
    EXPECT_EQ(log.Lines(), (std::vector<std::string>{"ALDER32.DLL|load", "ALDER32.DLL|unload"}));
    EXPECT_EQ(prism::LoadCodecEntry("ALDER.DLL", "SaveDIBInMapleFormat", &module), nullptr);
    prism::FreeCodecModule(module);
    module = &recorder;
    EXPECT_EQ(prism::LoadCodecEntry("NOSUCH32.DLL", "LoadAlderIntoDIB", &module), nullptr);
    EXPECT_EQ(module, nullptr);
    EXPECT_EQ(prism::LoadCodecEntry(std::string(300, 'Q').c_str(), "x", &module), nullptr);
    const std::string birch = "'BIRCH.DLL' module has not found (0)";
    EXPECT_EQ(Messages(recorder), (std::vector<std::string>{"'ELDER32.DLL' module has not found (0)", birch, birch, birch,
        "'LoadOakIntoDIB' function has not found in 'ALDER32.DLL' module", "'SaveDIBInMapleFormat' function has not found in 'ALDER.DLL' module",
        "'NOSUCH32.DLL' module has not found (0)", "'" + std::string(118, 'Q')}));
}

// Every save row: the calls ("ptr": a status pointer) and the last entry's
// result passed on; codes that cannot be saved give 0 and touch nothing.
// DCX makes a new file, then adds the page; an existing file only gets the
// page.
TEST(SaveDispatch, EachFormatCallsItsEntryAndPassesTheResultOn) {
    const std::string beech = "BIRCH.DLL|SaveDIBInBeechFormat|saved.out|dib|ptr";
    const struct { int format, option1, option2; std::vector<std::string> calls; int result; bool exists = false; } cases[] = {
        {1, 3, 9, Each({"ALDER.DLL|SaveDIBInAlderFormat|saved.out|dib|9|1"}), 11},
        {2, 3, 9, Each({"BIRCH.DLL|SaveDIBInBirchFormat|saved.out|dib|ptr"}), 12},
        {3, 3, 9, Each({"BIRCH.DLL|MakeBeechFile|saved.out|ptr", beech}), 14}, {3, 3, 9, Each({beech}), 14, true},
        {4, 3, 9, Each({"CEDAR.DLL|SaveDIBInCedarFormat|saved.out|dib|3|ptr"}), 15},
        {5, 3, 7, Each({"ELDER.DLL|SaveDIBInElderFormat|saved.out|dib|1|1"}), 16},  // second option as yes or no
        {5, 3, 0, Each({"ELDER.DLL|SaveDIBInElderFormat|saved.out|dib|0|1"}), 16},
        {12, 3, 9, Each({"ALDER.DLL|SAVEDIBINMAPLEFORMAT|saved.out|dib|0|0|0"}), 17},
        {13, 3, 9, Each({"HAZEL.DLL|SaveDIBInHazelFile|saved.out|dib|75"}), 18},  // fixed quality
        {-1, 1, 1, {}, 0}, {0, 1, 1, {}, 0}, {9, 1, 1, {}, 0}, {11, 1, 1, {}, 0}, {14, 1, 1, {}, 0},
#ifndef _WIN32
        // Without device bitmaps there is no metafile or clipboard writer.
        {7, 1, 1, {}, 0},  {8, 1, 1, {}, 0},
#endif
        {6, 1, 1, {}, 1, true},  // the library's own BMP writer, no module
    };
    HDIB dib = BlockFrom(PackedDib({4, 4, 1}));
    const SIZE_T size = GlobalSize(dib);
    for (const auto& c : cases) {
        SCOPED_TRACE(std::to_string(c.format) + (c.exists ? " to an existing file" : ""));
        std::remove("saved.out");
        if (c.exists) WriteFile("saved.out", {});
        CallLog log;
        prism::LastImgError = 27;
        EXPECT_EQ(SaveDIBInImageFormat("saved.out", dib, c.format, c.option1, c.option2), c.result);
        EXPECT_EQ(Calls(log, dib), c.calls);
        const auto lines = log.Lines();  // both DCX calls share one status pointer
        if (lines.size() == 6) { EXPECT_EQ(lines[1].substr(lines[1].rfind('|')), lines[4].substr(lines[4].rfind('|'))); }
        EXPECT_EQ(std::filesystem::exists("saved.out"), c.exists);  // the stand-ins make no file
        if (c.format == 6) { EXPECT_EQ(ReadFile("saved.out"), BmpFile(BlockBytes(dib))); }
        EXPECT_EQ(prism::LastImgError, 27);
        EXPECT_EQ(GlobalSize(dib), size);  // still the caller's
    }
    std::remove("saved.out");
    EXPECT_EQ(SaveDIBInImageFormat("saved.out", nullptr, 6, 0, 0), 0);
    EXPECT_EQ(prism::LastImgError, 8);
    GlobalFree(dib);
}

}  // namespace
