// The last-error exports and the message table, the version query and the
// attach logic.
#include "core/attach.h"
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
    std::string shown;
    for (const auto& m : boxes.messages()) shown += m.caption + ": " + m.text + " (" + std::to_string(m.style) + ")\n";
    EXPECT_EQ(shown, "PRISM error: Invalid DIB size (48)\nPRISM error: Can't open file (48)\n");
    EXPECT_EQ(ImgError(), 3);
}

TEST(GetImageVersion, ResultAndBytesWrittenDependOnTheSize) {
    for (int size : {-5, 0, 1, 7, 12, 13, 64}) {
        char buffer[80];
        std::memset(buffer, '#', sizeof(buffer));
        const int written = size < 0 ? 0 : size > 13 ? 13 : size;
        EXPECT_EQ(GetImageVersion(buffer, size), size >= 13 ? reinterpret_cast<INT_PTR>(buffer) : size);
        // "Version 5.13" and its terminator as far as they fit; nothing past.
        EXPECT_EQ(std::memcmp(buffer, "Version 5.13", written), 0) << size;
        EXPECT_EQ(buffer[written], '#') << size;
    }
}

TEST(AttachLogic, NtHostsAttachAgainOldKernelsOnceThreadsAlways) {
    prism::AttachState nt, old;
    HINSTANCE instance = reinterpret_cast<HINSTANCE>(0x1234);
    const std::uint32_t oldKernel = 0x80000004u;
    EXPECT_EQ(prism::HandleAttachNotification(nt, 1, instance, 0x0A00), 1);
    EXPECT_EQ(nt.moduleInstance, instance);
    // An NT host may attach and detach again; the newest instance is kept.
    const int ntCalls[][2] = {{1, 1}, {0, 1}, {0, 1}};
    for (const auto& c : ntCalls) EXPECT_EQ(prism::HandleAttachNotification(nt, c[0], nullptr, 0x0A00), c[1]);
    EXPECT_EQ(nt.moduleInstance, nullptr);
    EXPECT_TRUE(nt.firstAttachDone && nt.firstDetachDone);
    // Without the NT kernel: once each (the two flags are independent).
    const int oldCalls[][2] = {{0, 1}, {0, 0}, {1, 1}, {1, 0}};
    for (const auto& c : oldCalls) EXPECT_EQ(prism::HandleAttachNotification(old, c[0], nullptr, oldKernel), c[1]);
    // Thread notifications are accepted, unknown reasons refused; neither counts.
    for (std::uint32_t reason : {2u, 3u, 4u, 99u, 0xFFFFFFFFu}) {
        prism::AttachState state;
        EXPECT_EQ(prism::HandleAttachNotification(state, reason, nullptr, 0x80000000u), reason < 4 ? 1 : 0) << reason;
        EXPECT_FALSE(state.firstAttachDone || state.firstDetachDone);
    }
}

}  // namespace
