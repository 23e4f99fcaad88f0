// Files by handle and profile files through the platform layer.
#include "core/dib.h"
#include "support/test_support.h"

#include <filesystem>

using namespace testing_support;

namespace {

TEST(Files, OpenReadWriteSeekAndClose) {
    ScratchFile file("files");
    EXPECT_EQ(plat::FileOpen(file.path(), plat::kOpenRead), plat::kBadFile);
    EXPECT_FALSE(plat::FileExists(file.path()));
    for (int pass = 0; pass < 2; ++pass) {  // creating again truncates
        HFILE f = plat::FileOpen(file.path(), plat::kOpenCreate | plat::kOpenReadWrite);
        ASSERT_NE(f, plat::kBadFile);
        EXPECT_EQ(prism::FileSizeOf(f), 0);
        EXPECT_EQ(plat::FileWrite(f, pass ? "ABCDEFGHIJ" : "abcdefghij", 10), 10);
        EXPECT_EQ(plat::FileSeek(f, 3, plat::kSeekSet), 3);
        EXPECT_EQ(prism::FileSizeOf(f), 10);
        EXPECT_EQ(plat::FileSeek(f, 0, plat::kSeekCur), 3);  // kept by FileSizeOf
        char buffer[16] = {};
        EXPECT_EQ(plat::FileRead(f, buffer, 16), 7);
        EXPECT_STREQ(buffer, pass ? "DEFGHIJ" : "defghij");
        EXPECT_EQ(plat::FileSeek(f, -4, plat::kSeekEnd), 6);
        EXPECT_EQ(plat::FileClose(f), 0);
        EXPECT_TRUE(plat::FileExists(file.path()));
    }
    EXPECT_EQ(plat::FileOpen(nullptr, plat::kOpenRead), plat::kBadFile);
    EXPECT_EQ(plat::FileOpen("", plat::kOpenRead), plat::kBadFile);
}

// Profile look-ups want a full path: a bare name would send the system's
// reader to its own directory.
TEST(Profile, CaseFirstMatchTrimmingNumbersAndFallbacks) {
    ScratchFile file("profile");
    const std::string text = "; a comment\r\n[Fax]\r\nTotalPages = 12\r\nName=  padded value   \r\n"
                             "Quoted=\"in quotes\"\r\nNegative=-7\r\nTrailing=42abc\r\nEmpty=\r\n"
                             "[ page1 ]\r\nPlane1=red.bmp\r\n[fax]\r\nTotalPages=99\r\n";
    file.Write(Bytes(text.begin(), text.end()));
    const std::string path = std::filesystem::absolute(file.path()).string();
    const std::string missing = std::filesystem::absolute("no-such-profile.ini").string();
    const char *p = path.c_str(), *none = missing.c_str();
    const struct { const char *section, *key; int fallback, want; const char* file; } ints[] = {
        {"fax", "totalpages", -1, 12, p}, {"FAX", "TOTALPAGES", -1, 12, p},  // case ignored, first match wins
        {"Fax", "Negative", 0, -7, p},    {"Fax", "Trailing", 0, 42, p},     {"Fax", "Name", 5, 0, p},  // as far as digits go
        {"Fax", "Missing", 77, 77, p},    {"Nowhere", "TotalPages", 78, 78, p}, {"Fax", "Empty", 79, 79, p},
        {"Fax", "TotalPages", 80, 80, none}};
    for (const auto& c : ints) EXPECT_EQ(plat::ProfileInt(c.section, c.key, c.fallback, c.file), c.want) << c.key;
    const struct { const char *section, *key; size_t size, length; const char* want; } strings[] = {
        {"Page1", "PLANE1", 64, 7, "red.bmp"}, {"Fax", "Name", 64, 12, "padded value"}, {"Fax", "Quoted", 64, 9, "in quotes"},
        {"Fax", "Missing", 8, 7, "default"}, {"Fax", "Name", 5, 4, "padd"}};  // cut to size - 1
    char buffer[64];
    for (const auto& c : strings) {
        EXPECT_EQ(plat::ProfileString(c.section, c.key, "default", buffer, c.size, p), c.length) << c.key;
        EXPECT_STREQ(buffer, c.want);
    }
}

}  // namespace
