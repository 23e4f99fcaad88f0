// The version query and the attach logic.
#include "core/attach.h"
#include "prism32.h"

#include <gtest/gtest.h>

#include <cstring>

namespace {

TEST(GetImageVersion, ResultAndBytesWrittenDependOnTheSize) {
    struct Case {
        int size;
        int written;       // bytes changed in the buffer
        bool returnsBuffer;
    } cases[] = {{-5, 0, false}, {0, 0, false}, {1, 1, false}, {7, 7, false},
                 {12, 12, false}, {13, 13, true}, {64, 13, true}};
    for (const Case& c : cases) {
        char buffer[80];
        std::memset(buffer, '#', sizeof(buffer));
        INT_PTR result = GetImageVersion(buffer, c.size);
        const INT_PTR expected = c.returnsBuffer ? reinterpret_cast<INT_PTR>(buffer) : c.size;
        EXPECT_EQ(result, expected) << c.size;
        EXPECT_EQ(std::memcmp(buffer, "Version 5.13", c.written > 12 ? 12 : c.written), 0) << c.size;
        if (c.written == 13) {
            EXPECT_EQ(buffer[12], '\0');
        }
        // Nothing past what was written, and no terminator for short sizes.
        EXPECT_EQ(buffer[c.written], '#') << c.size;
    }
}

TEST(AttachLogic, NotificationsOnAnNtHost) {
    prism::AttachState state;
    HINSTANCE instance = reinterpret_cast<HINSTANCE>(0x1234);
    EXPECT_EQ(prism::HandleAttachNotification(state, 1, instance, 0x0A00), 1);
    EXPECT_EQ(state.moduleInstance, instance);
    // An NT host may attach again; the newest instance is kept.
    EXPECT_EQ(prism::HandleAttachNotification(state, 1, nullptr, 0x0A00), 1);
    EXPECT_EQ(prism::HandleAttachNotification(state, 0, nullptr, 0x0A00), 1);
    EXPECT_EQ(prism::HandleAttachNotification(state, 0, nullptr, 0x0A00), 1);
    EXPECT_TRUE(state.firstAttachDone);
    EXPECT_TRUE(state.firstDetachDone);
}

TEST(AttachLogic, HostWithoutNtKernelAttachesAndDetachesOnceEach) {
    const std::uint32_t oldKernel = 0x80000004u;
    prism::AttachState state;
    EXPECT_EQ(prism::HandleAttachNotification(state, 0, nullptr, oldKernel), 1);  // flags are independent
    EXPECT_EQ(prism::HandleAttachNotification(state, 0, nullptr, oldKernel), 0);
    EXPECT_EQ(prism::HandleAttachNotification(state, 1, nullptr, oldKernel), 1);
    EXPECT_EQ(prism::HandleAttachNotification(state, 1, nullptr, oldKernel), 0);
}

TEST(AttachLogic, ThreadNotificationsAcceptAndUnknownReasonsRefuse) {
    struct Case {
        std::uint32_t reason;
        int result;
    } cases[] = {{2, 1}, {3, 1}, {4, 0}, {99, 0}, {0xFFFFFFFFu, 0}};
    for (const Case& c : cases) {
        prism::AttachState state;
        EXPECT_EQ(prism::HandleAttachNotification(state, c.reason, nullptr, 0x80000000u), c.result) << c.reason;
        EXPECT_FALSE(state.firstAttachDone);
        EXPECT_FALSE(state.firstDetachDone);
    }
}

}  // namespace
