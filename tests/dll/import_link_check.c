/* Links a C host against the 32-bit import library: every call below must
 * resolve to its stdcall-decorated import. */
#include "prism32.h"

int main(void) {
    char text[64];
    HDIB dib;
    SetImgError(0);
    ImgErrorString(text, ImgError());
    GetImageVersion(text, sizeof(text));
    dib = LoadDIBFromFile("x.bmp");
    return SaveDIB("y.bmp", dib) + (ReadDIBInfo(HFILE_ERROR) != 0);
}
