// A real printer of the graphics system for the tests: the PostScript
// driver with a small description (300 dots per inch, Letter, the whole
// page printable) writing to a file; the printing tests read what came
// out.
#pragma once

#include <windows.h>

#include <string>

namespace testing_support {

constexpr const char* kTestPrinter = "PrismTestPrinter";

// Installs the driver and the printer once per process; false with the
// reason when the system refuses.
bool InstallTestPrinter(std::string* error);
// Where the printer writes (a Windows path in the working directory).
std::string PrinterOutput();
// A fresh printer context writing to PrinterOutput().
HDC CreateTestPrinterDC();
// The "device" value that makes the test printer the default.
std::string TestPrinterDevice();

// Sets (or with null, removes) "device" of "windows" for a scope.
class DefaultPrinter {
public:
    explicit DefaultPrinter(const char* device);
    ~DefaultPrinter();

private:
    std::string saved_;
};

}  // namespace testing_support
