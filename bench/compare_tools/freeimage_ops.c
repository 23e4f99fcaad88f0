/* Times one FreeImage operation in-process for bench/compare:
 *   freeimage_ops OP IN OUT REPS  -> "MEDIAN_MS PEAK_KB" or "n/a" */
#include <FreeImage.h>

#include "timing.h"

static FIBITMAP* run_op(const char* op, FIBITMAP* in) {
    unsigned w = FreeImage_GetWidth(in), h = FreeImage_GetHeight(in);
    if (!strcmp(op, "rot90")) return FreeImage_Rotate(in, -90, NULL);
    if (!strcmp(op, "rot180")) return FreeImage_Rotate(in, 180, NULL);
    if (!strcmp(op, "flip")) {  /* its flip works in place: copy first, as ours returns a new image */
        FIBITMAP* c = FreeImage_Clone(in);
        if (c) FreeImage_FlipHorizontal(c);
        return c;
    }
    if (!strcmp(op, "rotate")) return FreeImage_Rotate(in, -30, NULL);
    if (!strcmp(op, "up_linear")) return FreeImage_Rescale(in, w * 3 / 2, h * 3 / 2, FILTER_BILINEAR);
    if (!strcmp(op, "up_cubic")) return FreeImage_Rescale(in, w * 3 / 2, h * 3 / 2, FILTER_BICUBIC);
    if (!strcmp(op, "down_linear")) return FreeImage_Rescale(in, w / 2, h / 2, FILTER_BILINEAR);
    if (!strcmp(op, "down_cubic")) return FreeImage_Rescale(in, w / 2, h / 2, FILTER_BICUBIC);
    if (!strcmp(op, "grey")) return FreeImage_ConvertToGreyscale(in);
    if (!strcmp(op, "to24")) return FreeImage_ConvertTo24Bits(in);
    if (!strcmp(op, "fs1")) return FreeImage_Dither(in, FID_FS);
    if (!strcmp(op, "ordered1")) return FreeImage_Dither(in, FID_BAYER16x16);
    if (!strcmp(op, "threshold1")) return FreeImage_Threshold(in, 128);
    return NULL;
}

static int supported(const char* op) {
    static const char* ops[] = {"load", "save", "rot90", "rot180", "flip", "rotate", "up_linear", "up_cubic",
                                "down_linear", "down_cubic", "grey", "to24", "fs1", "ordered1", "threshold1",
                                "rle8", NULL};
    for (int i = 0; ops[i]; ++i)
        if (!strcmp(op, ops[i])) return 1;
    return 0;
}

int main(int argc, char** argv) {
    if (argc != 5) return 2;
    const char *op = argv[1], *in = argv[2], *out = argv[3];
    int reps = atoi(argv[4]);
    if (reps < 1) reps = 1;
    if (!supported(op)) {
        printf("n/a\n");
        return 0;
    }
    FreeImage_Initialise(FALSE);
    double* times = calloc(reps, sizeof(double));
    FIBITMAP* src = strcmp(op, "load") ? FreeImage_Load(FIF_BMP, in, 0) : NULL;
    if (strcmp(op, "load") && !src) return 1;
    for (int r = 0; r < reps; ++r) {
        double t0 = now_ms();
        if (!strcmp(op, "load")) {
            FIBITMAP* d = FreeImage_Load(FIF_BMP, in, 0);
            if (!d) return 1;
            times[r] = now_ms() - t0;
            FreeImage_Unload(d);
        } else if (!strcmp(op, "save")) {
            if (!FreeImage_Save(FIF_BMP, src, out, 0)) return 1;
            times[r] = now_ms() - t0;
        } else if (!strcmp(op, "rle8")) {
            /* run-length coding into a BMP held in memory */
            FIMEMORY* mem = FreeImage_OpenMemory(NULL, 0);
            if (!FreeImage_SaveToMemory(FIF_BMP, src, mem, BMP_SAVE_RLE)) return 1;
            times[r] = now_ms() - t0;
            FreeImage_CloseMemory(mem);
        } else {
            FIBITMAP* d = run_op(op, src);
            if (!d) return 1;
            times[r] = now_ms() - t0;
            if (r == reps - 1 && strcmp(out, "-")) FreeImage_Save(FIF_BMP, d, out, 0);
            FreeImage_Unload(d);
        }
    }
    report(times, reps);
    return 0;
}
