/* Times one Leptonica operation in-process for bench/compare:
 *   leptonica_ops OP IN OUT REPS  -> "MEDIAN_MS PEAK_KB" or "n/a" */
#include <leptonica/allheaders.h>

#include "timing.h"

static PIX* run_op(const char* op, PIX* in, L_KERNEL* k3, L_KERNEL* k5) {
    l_int32 w = pixGetWidth(in), h = pixGetHeight(in);
    if (!strcmp(op, "rot90")) return pixRotate90(in, 1);
    if (!strcmp(op, "rot180")) return pixRotate180(NULL, in);
    if (!strcmp(op, "flip")) return pixFlipLR(NULL, in);
    if (!strcmp(op, "rotate")) return pixRotate(in, 30.0f * 3.14159265f / 180.0f, L_ROTATE_SAMPLING, L_BRING_IN_BLACK, w, h);
    if (!strcmp(op, "up_linear")) return pixScaleLI(in, 1.5f, 1.5f);
    if (!strcmp(op, "down_linear")) return pixScaleLI(in, 0.5f, 0.5f);
    if (!strcmp(op, "conv3")) return pixConvolveRGB(in, k3);
    if (!strcmp(op, "conv5")) return pixConvolveRGB(in, k5);
    if (!strcmp(op, "grey")) return pixConvertRGBToLuminance(in);
    if (!strcmp(op, "to24")) return pixRemoveColormap(in, REMOVE_CMAP_TO_FULL_COLOR);
    if (!strcmp(op, "fs1") || !strcmp(op, "threshold1")) {  /* grey first, as ours does inside */
        PIX* g = pixConvertRGBToLuminance(in);
        PIX* b = g ? (!strcmp(op, "fs1") ? pixDitherToBinary(g) : pixThresholdToBinary(g, 128)) : NULL;
        pixDestroy(&g);
        return b;
    }
    return NULL;
}

static int supported(const char* op) {
    static const char* ops[] = {"load", "save", "rot90", "rot180", "flip", "rotate", "up_linear", "down_linear",
                                "conv3", "conv5", "grey", "to24", "fs1", "threshold1", NULL};
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
    setMsgSeverity(L_SEVERITY_ERROR);
    L_KERNEL* k3 = makeFlatKernel(3, 3, 1, 1);
    L_KERNEL* k5 = makeFlatKernel(5, 5, 2, 2);
    double* times = calloc(reps, sizeof(double));
    PIX* src = strcmp(op, "load") ? pixRead(in) : NULL;
    if (strcmp(op, "load") && !src) return 1;
    for (int r = 0; r < reps; ++r) {
        double t0 = now_ms();
        if (!strcmp(op, "load")) {
            PIX* d = pixRead(in);
            if (!d) return 1;
            times[r] = now_ms() - t0;
            pixDestroy(&d);
        } else if (!strcmp(op, "save")) {
            if (pixWrite(out, src, IFF_BMP)) return 1;
            times[r] = now_ms() - t0;
        } else {
            PIX* d = run_op(op, src, k3, k5);
            if (!d) return 1;
            times[r] = now_ms() - t0;
            if (r == reps - 1 && strcmp(out, "-")) pixWrite(out, d, IFF_BMP);
            pixDestroy(&d);
        }
    }
    report(times, reps);
    return 0;
}
