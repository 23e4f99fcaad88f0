// Library-wide state of the histogram family: one window position and the
// table sizes set by the create modes.
#pragma once

namespace prism {
namespace tone {

extern int HistWindowLeft;  // left edge of the counted window; -256 after create
extern int HistWindowTop;   // top edge, counted from the top of the image
extern int HistTableBytes;  // 512 once a histogram was made
extern int LutEntries;      // 256 once a curve was made; entries a compute writes

}  // namespace tone
}  // namespace prism
