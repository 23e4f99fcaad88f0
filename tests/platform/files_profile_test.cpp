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

    HFILE f = plat::FileOpen(file.path(), plat::kOpenCreate | plat::kOpenReadWrite);
    ASSERT_NE(f, plat::kBadFile);
    EXPECT_EQ(plat::FileWrite(f, "abcdefghij", 10), 10);
    EXPECT_EQ(plat::FileSeek(f, 3, plat::kSeekSet), 3);
    EXPECT_EQ(prism::FileSizeOf(f), 10);
    EXPECT_EQ(plat::FileSeek(f, 0, plat::kSeekCur), 3);  // kept by FileSizeOf
    char buffer[16] = {};
    EXPECT_EQ(plat::FileRead(f, buffer, 16), 7);
    EXPECT_STREQ(buffer, "defghij");
    EXPECT_EQ(plat::FileSeek(f, -4, plat::kSeekEnd), 6);
    EXPECT_EQ(plat::FileClose(f), 0);
    EXPECT_TRUE(plat::FileExists(file.path()));

    // Creating again truncates.
    f = plat::FileOpen(file.path(), plat::kOpenCreate | plat::kOpenReadWrite);
    ASSERT_NE(f, plat::kBadFile);
    EXPECT_EQ(prism::FileSizeOf(f), 0);
    plat::FileClose(f);
    EXPECT_EQ(plat::FileOpen(nullptr, plat::kOpenRead), plat::kBadFile);
    EXPECT_EQ(plat::FileOpen("", plat::kOpenRead), plat::kBadFile);
}

// Profile look-ups want a full path: a bare name would send the system's
// reader to its own directory.
class Profile : public ::testing::Test {
protected:
    void SetUp() override {
        file_.Write(Bytes(kText, kText + sizeof(kText) - 1));
        path_ = std::filesystem::absolute(file_.path()).string();
    }
    static constexpr char kText[] =
        "; a comment\r\n"
        "[Fax]\r\n"
        "TotalPages = 12\r\n"
        "Name=  padded value   \r\n"
        "Quoted=\"in quotes\"\r\n"
        "Negative=-7\r\n"
        "Trailing=42abc\r\n"
        "Empty=\r\n"
        "[ page1 ]\r\n"
        "Plane1=red.bmp\r\n"
        "[fax]\r\n"
        "TotalPages=99\r\n";
    ScratchFile file_{"profile"};
    std::string path_;
};

TEST_F(Profile, CaseFirstMatchTrimmingNumbersAndFallbacks) {
    const char* p = path_.c_str();
    char buffer[64];
    const struct { const char *section, *key; int fallback, want; } ints[] = {
        {"fax", "totalpages", -1, 12}, {"FAX", "TOTALPAGES", -1, 12},  // case ignored, first match wins
        {"Fax", "Negative", 0, -7},    {"Fax", "Trailing", 0, 42},     {"Fax", "Name", 5, 0},  // as far as digits go
        {"Fax", "Missing", 77, 77},    {"Nowhere", "TotalPages", 78, 78}, {"Fax", "Empty", 79, 79}};
    for (const auto& c : ints) EXPECT_EQ(plat::ProfileInt(c.section, c.key, c.fallback, p), c.want) << c.key;
    const std::string missing = std::filesystem::absolute("no-such-profile.ini").string();
    EXPECT_EQ(plat::ProfileInt("Fax", "TotalPages", 80, missing.c_str()), 80);
    const struct { const char *section, *key; size_t size, length; const char* want; } strings[] = {
        {"Page1", "PLANE1", 64, 7, "red.bmp"}, {"Fax", "Name", 64, 12, "padded value"}, {"Fax", "Quoted", 64, 9, "in quotes"},
        {"Fax", "Missing", 8, 7, "default"}, {"Fax", "Name", 5, 4, "padd"}};  // cut to size - 1
    for (const auto& c : strings) {
        EXPECT_EQ(plat::ProfileString(c.section, c.key, "default", buffer, c.size, p), c.length) << c.key;
        EXPECT_STREQ(buffer, c.want);
    }
}

}  // namespace
