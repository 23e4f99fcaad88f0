// The version query and the attach logic.
#include "core/attach.h"
#include "support/test_support.h"

namespace {

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
