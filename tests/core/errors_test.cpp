// The last-error exports and the message table.
#include "core/errors.h"
#include "support/test_support.h"

#include <climits>

using namespace testing_support;

namespace {

TEST(Errors, SetImgErrorStoresOnlyCodesUpTo31AndReturnsThePrevious) {
    const int cases[][2] = {{5, 5}, {31, 31}, {32, 31}, {-1, 31}, {0, 0}, {1000, 0}, {30, 30}, {INT_MIN, 30}, {17, 17}};
    int before = ImgError();
    for (const auto& c : cases) {
        EXPECT_EQ(SetImgError(c[0]), before) << c[0];
        EXPECT_EQ(ImgError(), c[1]) << c[0];
        before = ImgError();
    }
    EXPECT_EQ(ImgError(), 17);  // reading does not clear
}

TEST(Errors, TextsKeepTheirWordingAndFitFiftyBytes) {
    const std::pair<int, const char*> texts[] = {
        {0, "Operation was successful."}, {4, "General I/O error in reading or writting."},
        {18, "DIB must be uncompressed"}, {20, "Paramater error in Dithering"},
        {22, "The TORVA algorithm creates only 1 or 4 bit image"}, {25, "Could not get dispaly DC"}, {30, "Nothing to do."}};
    char buffer[64];
    for (const auto& [code, text] : texts) {
        std::memset(buffer, 'x', sizeof(buffer));
        EXPECT_EQ(ImgErrorString(buffer, code), buffer);
        EXPECT_STREQ(buffer, text);
    }
    size_t longest = 0;
    for (int code = 0; code <= 30; ++code) {
        ASSERT_NE(prism::ErrorText(code), nullptr) << code;
        EXPECT_GT(std::strlen(prism::ErrorText(code)), 0u) << code;
        longest = std::max(longest, std::strlen(prism::ErrorText(code)));
    }
    EXPECT_EQ(longest, 49u);
    EXPECT_EQ(prism::ErrorText(31), nullptr);
}

TEST(Errors, OutOfRangeCodesAskForTheCurrentErrorAndThirtyOneHasNoText) {
    SetImgError(9);
    char buffer[64];
    for (int code : {99, -1, 32}) {
        ImgErrorString(buffer, code);
        EXPECT_STREQ(buffer, "Invalid file format") << code;
    }
    ImgErrorString(buffer, 0);  // in range: its own text whatever the current error
    EXPECT_STREQ(buffer, "Operation was successful.");
    for (int code : {31, -7}) {  // 31 itself, and 31 as the current error
        SetImgError(31);
        std::memset(buffer, 'x', sizeof(buffer));
        EXPECT_EQ(ImgErrorString(buffer, code), buffer);
        EXPECT_EQ(Bytes(buffer, buffer + 2), (Bytes{0, 'x'}));
    }
    MessageRecorder boxes;
    EXPECT_EQ(ImgErrorString(nullptr, 31), nullptr);
    EXPECT_TRUE(boxes.messages().empty());
    EXPECT_EQ(ImgError(), 31);
}

TEST(Errors, NullBufferShowsTheTextInAnExclamationBox) {
    SetImgError(3);
    MessageRecorder boxes;
    EXPECT_EQ(ImgErrorString(nullptr, 19), nullptr);
    EXPECT_EQ(ImgErrorString(nullptr, -1), nullptr);
    ASSERT_EQ(boxes.messages().size(), 2u);
    EXPECT_EQ(boxes.messages()[0].text, "Invalid DIB size");
    EXPECT_EQ(boxes.messages()[0].caption, "PRISM error");
    EXPECT_EQ(boxes.messages()[0].style, 48u);
    EXPECT_EQ(boxes.messages()[1].text, "Can't open file");
    EXPECT_EQ(ImgError(), 3);
}

}  // namespace
