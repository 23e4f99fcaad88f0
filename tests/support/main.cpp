// Test entry point: no test may ever show a real message box, so any box
// that reaches the platform outside a MessageRecorder fails the test.
#include "platform/platform.h"

#include <gtest/gtest.h>

namespace {
int UnexpectedMessage(const char* text, const char* caption, unsigned, void*) {
    ADD_FAILURE() << "unexpected message box: " << caption << ": " << text;
    return plat::kIdOk;
}
}  // namespace

int main(int argc, char** argv) {
    ::testing::InitGoogleTest(&argc, argv);
    plat::ObserveMessages(&UnexpectedMessage, nullptr);
    return RUN_ALL_TESTS();
}
