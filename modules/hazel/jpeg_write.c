/* Entry point of HAZEL.DLL: DIBs saved as baseline JPEG through libjpeg.
 * Grey images (8-bit with the grey ramp) are written as one component,
 * every other image as RGB, palette images through their table. */
#include "module_image.h"

#include <setjmp.h>
#include <stdio.h>
#include <stdlib.h>
/* after stdio.h, which it needs */
#include <jpeglib.h>

typedef struct {
    struct jpeg_error_mgr base;
    jmp_buf back;
} ErrorExit;

/* libjpeg's default would end the host's process; return to the writer. */
static void OnError(j_common_ptr cinfo) {
    longjmp(((ErrorExit*)cinfo->err)->back, 1);
}

static void OnMessage(j_common_ptr cinfo) { (void)cinfo; }

static void FillLine(const DibImage* img, int y, int grey, JSAMPLE* line) {
    const BYTE* row = DibRow(img, y);
    for (int x = 0; x < img->width; ++x) {
        BYTE bgr[3];
        DibColorAt(img, row, x, bgr);
        if (grey) {
            line[x] = bgr[0];
        } else {
            line[3 * x] = bgr[2], line[3 * x + 1] = bgr[1], line[3 * x + 2] = bgr[0];
        }
    }
}

/* Everything that can fail after setjmp, on plain locals the jump keeps. */
static int Compress(struct jpeg_compress_struct* cinfo, const DibImage* img, int quality, JSAMPLE* line,
                    FILE* out) {
    const int grey = img->depth == 8 && DibIsGreyRamp(img);
    jpeg_create_compress(cinfo);
    jpeg_stdio_dest(cinfo, out);
    cinfo->image_width = (JDIMENSION)img->width;
    cinfo->image_height = (JDIMENSION)img->height;
    cinfo->input_components = grey ? 1 : 3;
    cinfo->in_color_space = grey ? JCS_GRAYSCALE : JCS_RGB;
    jpeg_set_defaults(cinfo);
    jpeg_set_quality(cinfo, quality < 1 ? 1 : quality > 100 ? 100 : quality, TRUE);
    const LONG ppm = img->header->biXPelsPerMeter;
    if (ppm > 0 && ppm / 39.3701 < 65535) {
        cinfo->density_unit = 1;
        cinfo->X_density = cinfo->Y_density = (UINT16)(ppm / 39.3701 + 0.5);
    }
    jpeg_start_compress(cinfo, TRUE);
    for (int y = 0; y < img->height; ++y) {
        FillLine(img, y, grey, line);
        JSAMPROW rows[1] = {line};
        jpeg_write_scanlines(cinfo, rows, 1);
    }
    jpeg_finish_compress(cinfo);
    return 1;
}

/* quality: 1 to 100 (the library passes 75). Result 1 when written. */
MODULE_EXPORT int WINAPI SaveDIBInHazelFile(LPCSTR fileName, HDIB dib, int quality) {
    DibImage img;
    if (!DibOpen(&img, dib)) return 0;
    JSAMPLE* line = (JSAMPLE*)malloc(3 * (size_t)img.width);
    FILE* out = line && fileName ? fopen(fileName, "wb") : NULL;
    struct jpeg_compress_struct cinfo;
    ErrorExit error;
    volatile int ok = 0;
    if (out) {
        cinfo.err = jpeg_std_error(&error.base);
        error.base.error_exit = OnError;
        error.base.output_message = OnMessage;
        if (setjmp(error.back) == 0) ok = Compress(&cinfo, &img, quality, line, out);
        jpeg_destroy_compress(&cinfo);
        if (fclose(out) != 0) ok = 0;
    }
    free(line);
    DibClose(&img);
    return ok;
}
