#!/usr/bin/python3
"""Times one operation of Pillow or OpenCV in-process for bench/compare.

    peers.py pillow|opencv OP IN OUT REPS THREADS

Prints "MEDIAN_MS PEAK_KB", or "n/a" when the peer has no such operation.
The input is loaded once before timing (except for "load"); the result of
the last repetition is saved to OUT outside the timing.
"""
import os
import resource
import sys
import time


def pillow_ops(threads):
    from PIL import Image, ImageFilter

    def scaled(im, f, how):
        return im.resize((int(im.width * f), int(im.height * f)), how)

    box3 = ImageFilter.Kernel((3, 3), [1] * 9, scale=9)
    box5 = ImageFilter.Kernel((5, 5), [1] * 25, scale=25)
    return Image.open, lambda im, out: im.save(out, "BMP"), {
        "load": lambda path: Image.open(path).load(),
        "rot90": lambda im: im.transpose(Image.Transpose.ROTATE_270),  # clockwise 90
        "rot180": lambda im: im.transpose(Image.Transpose.ROTATE_180),
        "flip": lambda im: im.transpose(Image.Transpose.FLIP_LEFT_RIGHT),
        "rotate": lambda im: im.rotate(-30, Image.Resampling.NEAREST, expand=True),
        "up_linear": lambda im: scaled(im, 1.5, Image.Resampling.BILINEAR),
        "up_cubic": lambda im: scaled(im, 1.5, Image.Resampling.BICUBIC),
        "down_linear": lambda im: scaled(im, 0.5, Image.Resampling.BILINEAR),
        "down_cubic": lambda im: scaled(im, 0.5, Image.Resampling.BICUBIC),
        "conv3": lambda im: im.filter(box3),
        "conv5": lambda im: im.filter(box5),
        "grey": lambda im: im.convert("L"),
        "to24": lambda im: im.convert("RGB"),
        "fs1": lambda im: im.convert("1", dither=Image.Dither.FLOYDSTEINBERG),
        "threshold1": lambda im: im.convert("1", dither=Image.Dither.NONE),
    }


def opencv_ops(threads):
    import cv2
    import numpy as np

    cv2.setNumThreads(threads)

    def rotate(im):
        h, w = im.shape[:2]
        m = cv2.getRotationMatrix2D((w / 2, h / 2), -30, 1.0)
        c, s = abs(m[0, 0]), abs(m[0, 1])
        nw, nh = int(h * s + w * c), int(h * c + w * s)
        m[0, 2] += nw / 2 - w / 2
        m[1, 2] += nh / 2 - h / 2
        return cv2.warpAffine(im, m, (nw, nh), flags=cv2.INTER_NEAREST)

    def scaled(im, f, how):
        h, w = im.shape[:2]
        return cv2.resize(im, (int(w * f), int(h * f)), interpolation=how)

    def threshold(im):
        grey = cv2.cvtColor(im, cv2.COLOR_BGR2GRAY)
        return cv2.threshold(grey, 127, 255, cv2.THRESH_BINARY)[1]

    return (lambda path: cv2.imread(path, cv2.IMREAD_UNCHANGED)), (lambda im, out: cv2.imwrite(out, im)), {
        "load": lambda path: cv2.imread(path, cv2.IMREAD_UNCHANGED),
        "rot90": lambda im: cv2.rotate(im, cv2.ROTATE_90_CLOCKWISE),
        "rot180": lambda im: cv2.rotate(im, cv2.ROTATE_180),
        "flip": lambda im: cv2.flip(im, 1),
        "rotate": rotate,
        "up_linear": lambda im: scaled(im, 1.5, cv2.INTER_LINEAR),
        "up_cubic": lambda im: scaled(im, 1.5, cv2.INTER_CUBIC),
        "down_linear": lambda im: scaled(im, 0.5, cv2.INTER_LINEAR),
        "down_cubic": lambda im: scaled(im, 0.5, cv2.INTER_CUBIC),
        "conv3": lambda im: cv2.filter2D(im, -1, np.ones((3, 3), np.float32) / 9),
        "conv5": lambda im: cv2.filter2D(im, -1, np.ones((5, 5), np.float32) / 25),
        "grey": lambda im: cv2.cvtColor(im, cv2.COLOR_BGR2GRAY),
        "threshold1": threshold,
    }


def main():
    peer, op, path, out, reps, threads = sys.argv[1:7]
    reps, threads = max(1, int(reps)), int(threads)
    load, save, ops = (pillow_ops if peer == "pillow" else opencv_ops)(threads)
    if op not in ops and op != "save":
        print("n/a")
        return
    times = []
    source = None if op == "load" else load(path)
    if peer == "pillow" and source is not None:
        source.load()
    result = None
    for _ in range(reps):
        t0 = time.perf_counter()
        if op == "load":
            result = ops["load"](path)
        elif op == "save":
            save(source, out)
        else:
            result = ops[op](source)
        times.append((time.perf_counter() - t0) * 1000)
        if op not in ("load", "save"):
            last = result
            result = None
            del last
    times.sort()
    peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss
    if op not in ("load", "save") and out != "-":
        save(ops[op](source), out)
    print(f"{times[len(times) // 2]:.2f} {peak}")


if __name__ == "__main__":
    main()
