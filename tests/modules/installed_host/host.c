/* A host built against an installed tree: loads page 1 of an image file
 * (a TIFF reaches the TIFF module) and saves it as BMP. */
#include <prism32.h>
#include <stdio.h>

int main(int argc, char** argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: host IMAGE OUT.bmp\n");
        return 2;
    }
    int status = 0;
    HDIB dib = LoadImageIntoDIB(argv[1], 1, &status);
    if (!dib) {
        fprintf(stderr, "%s: cannot be loaded (error %d)\n", argv[1], ImgError());
        return 1;
    }
    const BITMAPINFOHEADER* h = (const BITMAPINFOHEADER*)GlobalLock(dib);
    printf("%ld x %ld, %d bits\n", (long)h->biWidth, (long)h->biHeight, h->biBitCount);
    GlobalUnlock(dib);
    const int saved = SaveDIBInImageFormat(argv[2], dib, PRISM_FORMAT_BMP, 0, 0);
    GlobalFree(dib);
    return saved ? 0 : 1;
}
