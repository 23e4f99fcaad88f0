// Files by handle and profile files through the platform layer.
#include "core/dib.h"
#include "platform/platform.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <filesystem>
#include <string>

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

TEST_F(Profile, SectionsAndKeysIgnoreCaseAndTheFirstMatchWins) {
    const char* p = path_.c_str();
    EXPECT_EQ(plat::ProfileInt("fax", "totalpages", -1, p), 12);
    EXPECT_EQ(plat::ProfileInt("FAX", "TOTALPAGES", -1, p), 12);
    char buffer[64];
    EXPECT_EQ(plat::ProfileString("Page1", "PLANE1", "", buffer, sizeof(buffer), p), 7u);
    EXPECT_STREQ(buffer, "red.bmp");
}

TEST_F(Profile, ValuesAreTrimmedAndNumbersParseAsFarAsTheyGo) {
    const char* p = path_.c_str();
    char buffer[64];
    plat::ProfileString("Fax", "Name", "", buffer, sizeof(buffer), p);
    EXPECT_STREQ(buffer, "padded value");
    plat::ProfileString("Fax", "Quoted", "", buffer, sizeof(buffer), p);
    EXPECT_STREQ(buffer, "in quotes");
    EXPECT_EQ(plat::ProfileInt("Fax", "Negative", 0, p), -7);
    EXPECT_EQ(plat::ProfileInt("Fax", "Trailing", 0, p), 42);
    EXPECT_EQ(plat::ProfileInt("Fax", "Name", 5, p), 0);  // no digits
}

TEST_F(Profile, MissingKeysSectionsAndFilesGiveTheFallback) {
    const char* p = path_.c_str();
    char buffer[8];
    EXPECT_EQ(plat::ProfileInt("Fax", "Missing", 77, p), 77);
    EXPECT_EQ(plat::ProfileInt("Nowhere", "TotalPages", 78, p), 78);
    EXPECT_EQ(plat::ProfileInt("Fax", "Empty", 79, p), 79);
    std::string missing = std::filesystem::absolute("no-such-profile.ini").string();
    EXPECT_EQ(plat::ProfileInt("Fax", "TotalPages", 80, missing.c_str()), 80);
    EXPECT_EQ(plat::ProfileString("Fax", "Missing", "default", buffer, sizeof(buffer), p), 7u);
    EXPECT_STREQ(buffer, "default");
    // A value longer than the buffer is cut to size - 1 characters.
    EXPECT_EQ(plat::ProfileString("Fax", "Name", "", buffer, 5, p), 4u);
    EXPECT_STREQ(buffer, "padd");
}

}  // namespace
