// The last-error exports and the message table.
#include "core/errors.h"
#include "prism32.h"
#include "support/test_support.h"

#include <gtest/gtest.h>

#include <cstring>
#include <string>

using testing_support::MessageRecorder;

namespace {

class ErrorsTest : public ::testing::Test {
protected:
    void SetUp() override { saved_ = SetImgError(0); }
    void TearDown() override { prism::LastImgError = saved_; }
    int saved_ = 0;
};

TEST_F(ErrorsTest, SetImgErrorStoresOnlyCodesUpTo31AndAlwaysReturnsThePrevious) {
    struct Case {
        int code;
        int stored;
    } cases[] = {{5, 5}, {31, 31}, {32, 31}, {-1, 31}, {0, 0}, {1000, 0}, {30, 30}, {INT32_MIN, 30}};
    int before = ImgError();
    for (const Case& c : cases) {
        EXPECT_EQ(SetImgError(c.code), before) << "code " << c.code;
        EXPECT_EQ(ImgError(), c.stored) << "code " << c.code;
        before = ImgError();
    }
}

TEST_F(ErrorsTest, ReadingTheErrorDoesNotClearIt) {
    SetImgError(17);
    EXPECT_EQ(ImgError(), 17);
    EXPECT_EQ(ImgError(), 17);
}

TEST_F(ErrorsTest, TextsKeepTheirExactWording) {
    // A few texts whose spelling hosts compare against.
    struct Case {
        int code;
        const char* text;
    } cases[] = {
        {0, "Operation was successful."},
        {4, "General I/O error in reading or writting."},
        {18, "DIB must be uncompressed"},
        {20, "Paramater error in Dithering"},
        {22, "The TORVA algorithm creates only 1 or 4 bit image"},
        {25, "Could not get dispaly DC"},
        {30, "Nothing to do."},
    };
    char buffer[64];
    for (const Case& c : cases) {
        std::memset(buffer, 'x', sizeof(buffer));
        EXPECT_EQ(ImgErrorString(buffer, c.code), buffer);
        EXPECT_STREQ(buffer, c.text);
    }
}

TEST_F(ErrorsTest, EveryTextFitsFiftyBytesAndTheTableHasNoThirtySecondEntry) {
    size_t longest = 0;
    for (int code = 0; code <= 30; ++code) {
        const char* text = prism::ErrorText(code);
        ASSERT_NE(text, nullptr) << code;
        EXPECT_GT(std::strlen(text), 0u) << code;
        longest = std::max(longest, std::strlen(text));
    }
    EXPECT_EQ(longest, 49u);
    EXPECT_EQ(prism::ErrorText(31), nullptr);
}

TEST_F(ErrorsTest, OutOfRangeCodeAsksForTheCurrentError) {
    SetImgError(9);
    char buffer[64];
    for (int code : {99, -1, 32}) {
        ImgErrorString(buffer, code);
        EXPECT_STREQ(buffer, "Invalid file format") << code;
    }
    // Code 0 is in range: its own text whatever the current error.
    ImgErrorString(buffer, 0);
    EXPECT_STREQ(buffer, "Operation was successful.");
    EXPECT_EQ(ImgError(), 9);
}

TEST_F(ErrorsTest, CodeThirtyOneHasNoTextAndIsSafe) {
    char buffer[8];
    std::memset(buffer, 'x', sizeof(buffer));
    EXPECT_EQ(ImgErrorString(buffer, 31), buffer);
    EXPECT_EQ(buffer[0], '\0');
    EXPECT_EQ(buffer[1], 'x');

    // As the current error, asked for with an out-of-range code.
    SetImgError(31);
    std::memset(buffer, 'x', sizeof(buffer));
    ImgErrorString(buffer, -7);
    EXPECT_EQ(buffer[0], '\0');

    MessageRecorder boxes;
    EXPECT_EQ(ImgErrorString(nullptr, 31), nullptr);
    EXPECT_TRUE(boxes.messages().empty());
    EXPECT_EQ(ImgError(), 31);
}

TEST_F(ErrorsTest, NullBufferShowsTheTextInAnExclamationBox) {
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
