// Text work of printer setup: the list lines made from the profile's
// "devices" section, and the splits between a line and a "device" value.
#pragma once

#include <string>
#include <vector>

namespace prism {

struct PrinterEntry {
    std::string driver, name, port;
};

// Name up to the first '=' or comma, driver up to the next comma, port the
// rest.  With `addDrv`, a driver without a dot gets ".DRV".
PrinterEntry SplitPrinterEntry(const char* text, bool addDrv);

// The part of a list line behind its tab, '=' turned into ','; empty when
// the line has no tab.
std::string PrinterEntryToProfile(const char* line);

// One list line per port of a "devices" value "driver,port[,port...]":
// "name on port\tname=driver,port".  A value with no comma gives none.
std::vector<std::string> PrinterListLines(const char* name, const char* value);

// The part of a list line behind its tab (all of it when there is none).
const char* BehindTab(const char* line);

// After a key list was cut short: clears the cut-off name, from the last
// byte of the buffer backward.
void ClearCutOffName(char* buffer, unsigned size);

}  // namespace prism
