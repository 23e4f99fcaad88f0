// Printer setup's text work, apart from the dialog: list lines, the
// "device" value and the cut key list.
#include "print/printer_list.h"

#include <cstring>

namespace prism {

PrinterEntry SplitPrinterEntry(const char* text, bool addDrv) {
    PrinterEntry e;
    if (!text) return e;
    const char* p = text + std::strcspn(text, "=,");
    e.name.assign(text, p);
    if (*p) ++p;
    const char* q = p + std::strcspn(p, ",");
    e.driver.assign(p, q);
    if (*q) ++q;
    e.port = q;
    if (addDrv && e.driver.find('.') == std::string::npos) e.driver += ".DRV";
    return e;
}

const char* BehindTab(const char* line) {
    const char* tab = std::strchr(line, '\t');
    return tab ? tab + 1 : line;
}

std::string PrinterEntryToProfile(const char* line) {
    const char* tab = line ? std::strchr(line, '\t') : nullptr;
    std::string out;
    if (!tab) return out;
    for (const char* p = tab + 1; *p; ++p) out += *p == '=' ? ',' : *p;
    return out;
}

std::vector<std::string> PrinterListLines(const char* name, const char* value) {
    std::vector<std::string> lines;
    const char* comma = std::strchr(value, ',');
    if (!comma) return lines;
    const std::string driver(value, comma);
    for (const char* p = comma + 1; *p;) {
        const char* end = p + std::strcspn(p, ",");
        const std::string port(p, end);
        lines.push_back(std::string(name) + " on " + port + "\t" + name + "=" + driver + "," + port);
        p = *end ? end + 1 : end;
    }
    return lines;
}

void ClearCutOffName(char* buffer, unsigned size) {
    if (size == 0) return;
    unsigned i = size - 1;
    while (i > 0 && buffer[i] == '\0') --i;
    while (buffer[i] != '\0') {
        buffer[i] = '\0';
        if (i == 0) break;
        --i;
    }
}

}  // namespace prism
