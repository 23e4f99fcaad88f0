#!/usr/bin/env python3
"""The codec modules against independent readers and writers.

Files written by Pillow and libtiff's tools are loaded through the library
and compared pixel by pixel with what Pillow reads from them; files written
through the library are read by Pillow (and checked by tiffinfo and
giftext) and compared with the image they were written from.

usage: independent_readers.py LIBPRISM32 (run in a scratch directory)
"""
import ctypes, io, os, struct, subprocess, sys
from PIL import Image

lib = ctypes.CDLL(os.path.abspath(sys.argv[1]))
libdir = os.path.dirname(os.path.abspath(sys.argv[1]))
lib.LoadImageIntoDIB.restype = ctypes.c_void_p
lib.LoadImageIntoDIB.argtypes = [ctypes.c_char_p, ctypes.c_uint, ctypes.POINTER(ctypes.c_int)]
lib.SaveDIBInImageFormat.argtypes = [ctypes.c_char_p, ctypes.c_void_p, ctypes.c_int, ctypes.c_int, ctypes.c_int]
lib.GlobalLock.restype = ctypes.c_void_p
lib.GlobalLock.argtypes = lib.GlobalUnlock.argtypes = lib.GlobalFree.argtypes = [ctypes.c_void_p]
lib.GlobalSize.restype = ctypes.c_size_t
lib.GlobalSize.argtypes = [ctypes.c_void_p]
TIFF, PCX, DCX, GIF, TGA, BMP, CALS, JPEG = 1, 2, 3, 4, 5, 6, 12, 13
failures = []


def check(name, ok, detail=""):
    print(("ok   " if ok else "FAIL ") + name + ("" if ok else ": " + detail))
    if not ok:
        failures.append(name)


def dib_image(handle):
    """The block as a Pillow image, read from its bytes."""
    p = lib.GlobalLock(handle)
    raw = ctypes.string_at(p, lib.GlobalSize(handle))
    lib.GlobalUnlock(handle)
    _, w, h, _, bits, _, _, _, _, used, _ = struct.unpack("<IiiHHIIiiII", raw[:40])
    colors = used or (1 << bits if bits <= 8 else 0)
    stride = ((w * bits + 31) // 32) * 4
    data = raw[40 + 4 * colors:]
    if bits == 24:
        return Image.frombuffer("RGB", (w, h), data, "raw", "BGR", stride, -1)
    mode = {1: "P;1", 4: "P;4", 8: "P"}[bits]
    im = Image.frombuffer("P", (w, h), data, "raw", mode, stride, -1)
    table = raw[40:40 + 4 * colors]
    im.putpalette(b"".join(table[i + 2:i + 3] + table[i + 1:i + 2] + table[i:i + 1] for i in range(0, len(table), 4)))
    return im.convert("RGB")


def load(path, page=1, entry=None):
    status = ctypes.c_int(-1)
    if entry:  # a module's own entry, for files the library's detection passes over
        module = ctypes.CDLL(os.path.join(libdir, entry[0]))
        fn = getattr(module, entry[1])
        fn.restype = ctypes.c_void_p
        fn.argtypes = [ctypes.c_char_p, ctypes.c_uint, ctypes.POINTER(ctypes.c_int)]
        h = fn(path.encode(), page, ctypes.byref(status))
    else:
        h = lib.LoadImageIntoDIB(path.encode(), page, ctypes.byref(status))
    if not h:
        return None
    im = dib_image(h).copy()
    lib.GlobalFree(h)
    return im


def differences(a, b, tolerance=0):
    if a is None or b is None or a.size != b.size:
        return "missing" if a is None or b is None else "sizes %s %s" % (a.size, b.size)
    pa, pb = list(a.convert("RGB").getdata()), list(b.convert("RGB").getdata())
    bad = sum(1 for x, y in zip(pa, pb) if max(abs(i - j) for i, j in zip(x, y)) > tolerance)
    return "" if bad == 0 else "%d of %d pixels differ" % (bad, len(pa))


def picture(w=53, h=37):
    im = Image.new("RGB", (w, h))
    im.putdata([((x * 9) & 255, (y * 7) & 255, ((x ^ y) * 5) & 255) for y in range(h) for x in range(w)])
    return im


def over_white(im):
    white = Image.new("RGBA", im.size, (255, 255, 255, 255))
    return Image.alpha_composite(white, im.convert("RGBA")).convert("RGB")


def read_side():
    base = picture()
    rgba = base.convert("RGBA")
    rgba.putalpha(Image.linear_gradient("L").resize(base.size))
    bilevel = base.convert("L").point(lambda v: 255 if v > 100 else 0).convert("1")
    cases = [
        ("rgb.tif", base, {}), ("lzw.tif", base, {"compression": "tiff_lzw"}),
        ("grey.tif", base.convert("L"), {}), ("pal.tif", base.convert("P"), {}),
        ("g4.tif", bilevel, {"compression": "group4"}), ("g3.tif", bilevel, {"compression": "group3"}),
        ("rgb.pcx", base, {}), ("pal.pcx", base.convert("P"), {}), ("mono.pcx", bilevel, {}),
        ("rgb.TGA", base, {}), ("rle.TGA", base, {"compression": "tga_rle"}), ("pal.TGA", base.convert("P"), {}),
        ("grey.TGA", base.convert("L"), {}), ("pal.gif", base.convert("P"), {}),
    ]
    for name, im, options in cases:
        im.save(name, **options)
        check("reads " + name, differences(load(name), Image.open(name)) == "", differences(load(name), Image.open(name)))
    for name, options in [("alpha.tif", {}), ("alpha.TGA", {})]:
        rgba.save(name, **options)
        d = differences(load(name), over_white(Image.open(name)), tolerance=1)
        check("reads %s, alpha over white" % name, d == "", d)
    # tiles, and pages, made by libtiff's own tools
    subprocess.run(["tiffcp", "-t", "-w", "16", "-l", "16", "pal.tif", "tiled.tif"], check=True)
    subprocess.run(["tiffcp", "-c", "g4", "-t", "-w", "32", "-l", "16", "g4.tif", "tiledg4.tif"], check=True)
    for name, ref in [("tiled.tif", "pal.tif"), ("tiledg4.tif", "g4.tif")]:
        check("reads " + name, differences(load(name), Image.open(ref)) == "", differences(load(name), Image.open(ref)))
    subprocess.run(["tiffcp", "g4.tif", "pal.tif", "rgb.tif", "pages.tif"], check=True)
    for page, ref in enumerate(["g4.tif", "pal.tif", "rgb.tif"], 1):
        d = differences(load("pages.tif", page), Image.open(ref))
        check("reads pages.tif page %d" % page, d == "", d)
    check("pages.tif has no page 4", load("pages.tif", 4) is None)
    read_pages(base, bilevel)


def read_pages(base, bilevel):
    # DCX: the table of offsets in front of pages Pillow wrote as PCX
    pages = []
    for im in (bilevel, base.convert("P"), base):
        buf = io.BytesIO()
        im.save(buf, "PCX")
        pages.append(buf.getvalue())
    offsets, at = [], 4 + 4 * 1024
    for p in pages:
        offsets.append(at)
        at += len(p)
    with open("pages.dcx", "wb") as f:
        f.write(struct.pack("<I", 0x3ADE68B1) + struct.pack("<1024I", *(offsets + [0] * (1024 - len(offsets)))))
        f.write(b"".join(pages))
    for n in range(3):
        d = differences(load("pages.dcx", n + 1), Image.open(io.BytesIO(pages[n])))
        check("reads pages.dcx page %d" % (n + 1), d == "", d)
    # GIF frames with tables of their own (GIF89a: through the module's entry)
    frames = [base.point(lambda v, k=k: (v + 60 * k) & 255).convert("P", palette=Image.ADAPTIVE, colors=64 * (k + 1))
              for k in range(3)]
    frames[0].save("frames.gif", save_all=True, append_images=frames[1:], optimize=False)
    count = subprocess.run(["giftext", "frames.gif"], capture_output=True, text=True).stdout.count("Image #")
    ref = Image.open("frames.gif")
    for n in range(count):
        ref.seek(n)
        d = differences(load("frames.gif", n + 1, ("CEDAR32.DLL", "LoadCedarIntoDIB")), ref.convert("RGB"))
        check("reads frames.gif frame %d of %d" % (n + 1, count), d == "", d)
    check("frames.gif has no frame %d" % (count + 1),
          count == 3 and load("frames.gif", count + 1, ("CEDAR32.DLL", "LoadCedarIntoDIB")) is None)
    # CALS: the G4 strip of a one-strip TIFF behind a CALS header
    bilevel.save("strip.tif", compression="group4")
    t = Image.open("strip.tif")
    start, size = t.tag_v2[273][0], t.tag_v2[279][0]
    strip = open("strip.tif", "rb").read()[start:start + size]
    records = ["srcdocid: NONE", "rtype: 1", "rorient: 000,270", "rpelcnt: %06d,%06d" % bilevel.size]
    header = b"".join(r.encode().ljust(128) for r in records).ljust(2048)
    open("page.cal", "wb").write(header + strip)
    # G4 codes white runs as white: a black-is-zero strip shows inverted
    expect = bilevel if t.tag_v2[262] == 0 else bilevel.point(lambda v: 255 - v)
    check("reads page.cal", differences(load("page.cal"), expect) == "", differences(load("page.cal"), expect))


def write_side():
    base = picture()
    few = base.convert("P", palette=Image.ADAPTIVE, colors=200).convert("RGB")
    bilevel = base.convert("L").point(lambda v: 255 if v > 100 else 0).convert("1")
    cases = [("out1.tif", bilevel, TIFF, 0, "CCITT Group 4"), ("out8.tif", base.convert("P"), TIFF, 0, "LZW"),
             ("out24.tif", base, TIFF, 0, "LZW"), ("out.pcx", base, PCX, 0, None), ("out1.pcx", bilevel, PCX, 0, None),
             ("out8.pcx", base.convert("P"), PCX, 0, None), ("out.TGA", base, TGA, 1, None),
             ("out8.TGA", base.convert("P"), TGA, 0, None), ("out.gif", few, GIF, 0, "GIF87a"),
             ("out8.gif", base.convert("P"), GIF, 0, "GIF87a")]
    for name, im, fmt, option2, expect in cases:
        im.save("source.bmp")
        h = lib.LoadImageIntoDIB(b"source.bmp", 1, ctypes.byref(ctypes.c_int()))
        ok = lib.SaveDIBInImageFormat(name.encode(), h, fmt, 0, option2)
        lib.GlobalFree(h)
        d = differences(Image.open(name), im) if ok else "not written"
        if expect and ok:
            tool = ["tiffinfo", name] if fmt == TIFF else ["giftext", name]
            said = subprocess.run(tool, capture_output=True, text=True).stdout + open(name, "rb").read(6).decode("latin1")
            d = d or ("" if expect in said else "%s does not say %s" % (tool[0], expect))
        check("writes " + name, d == "", d)
    # CALS: its G4 data framed as a white-is-zero TIFF for Pillow to read
    bilevel.save("source.bmp")
    h = lib.LoadImageIntoDIB(b"source.bmp", 1, ctypes.byref(ctypes.c_int()))
    ok = lib.SaveDIBInImageFormat(b"out.cal", h, CALS, 0, 0)
    lib.GlobalFree(h)
    raw = open("out.cal", "rb").read() if ok else b""
    w, hgt = bilevel.size
    tags = [(256, 4, w), (257, 4, hgt), (258, 3, 1), (259, 3, 4), (262, 3, 0), (273, 4, 8 + 2 + 9 * 12 + 4),
            (277, 3, 1), (278, 4, hgt), (279, 4, len(raw) - 2048)]
    ifd = struct.pack("<H", 9) + b"".join(struct.pack("<HHII", t, k, 1, v) for t, k, v in tags) + b"\0" * 4
    open("cal.tif", "wb").write(b"II*\0" + struct.pack("<I", 8) + ifd + raw[2048:])
    d = differences(Image.open("cal.tif"), bilevel) if ok and raw.startswith(b"srcdocid:") else "not written"
    check("writes out.cal", d == "", d)
    base.save("source.bmp")
    h = lib.LoadImageIntoDIB(b"source.bmp", 1, ctypes.byref(ctypes.c_int()))
    ok = lib.SaveDIBInImageFormat(b"out.jpg", h, JPEG, 0, 0)
    lib.GlobalFree(h)
    # the same coder at the same quality, through Pillow
    base.save("pillow.jpg", quality=75)
    d = differences(Image.open("out.jpg"), Image.open("pillow.jpg"), tolerance=2) if ok else "not written"
    check("writes out.jpg at quality 75", d == "", d)


read_side()
write_side()
print("%d failed" % len(failures))
sys.exit(1 if failures else 0)
