#!/usr/bin/env python3
"""Writes index.html for the main job's results.

Reads the steps file run-main writes (tab-separated: section, label,
command, source, result, milliseconds, status, output) and shows each
result beside its source, with the operation and its arguments under it.
PNG copies (same name, .png) are shown in place of BMP files when present.
Steps run by prismview show the screenshot of its window as their result.
Standard library only.
"""
import html
import os
import sys


def shown(folder, path):
    """The file to show for an image: its PNG copy when there is one."""
    if not path:
        return ""
    rel = os.path.relpath(path, folder)
    png = os.path.splitext(path)[0] + ".png"
    if os.path.exists(png):
        return os.path.relpath(png, folder)
    return rel


def describe(path):
    """Size, depth and compression from a BMP file's header."""
    try:
        with open(path, "rb") as f:
            head = f.read(54)
    except OSError:
        return ""
    if head[:8] == b"\x89PNG\r\n\x1a\n" and len(head) >= 24:
        # A picture made outside the library, such as a rendered printed page.
        width = int.from_bytes(head[16:20], "big")
        height = int.from_bytes(head[20:24], "big")
        return f"{width}&times;{height} PNG, {os.path.getsize(path) / 1024:.0f} KB"
    if len(head) < 54 or head[:2] != b"BM":
        return ""
    width = int.from_bytes(head[18:22], "little", signed=True)
    height = int.from_bytes(head[22:26], "little", signed=True)
    bits = int.from_bytes(head[28:30], "little")
    comp = int.from_bytes(head[30:34], "little")
    size = os.path.getsize(path)
    text = f"{width}&times;{abs(height)}, {bits} bit"
    if comp in (1, 2):
        text += ", RLE" + ("8" if comp == 1 else "4")
    if size >= 1 << 20:
        text += f", {size / (1 << 20):.1f} MB"
    else:
        text += f", {size / 1024:.0f} KB"
    return text


def figure(folder, path, caption):
    if not path:
        return '<div class="pic none">no image</div>'
    ext = os.path.splitext(path)[1].lower()
    if ext == ".txt":
        # A text source is shown as text.
        try:
            with open(path, encoding="latin-1") as f:
                text = f.read(2000)
        except OSError:
            text = ""
        return f'<figure><pre>{html.escape(text)}</pre><figcaption>{caption}</figcaption></figure>'
    if ext in (".wmf", ".clp"):
        # Metafiles and clipboard files have no picture a browser shows.
        rel = html.escape(os.path.relpath(path, folder))
        return f'<figure><a href="{rel}">{rel}</a><figcaption>{caption}</figcaption></figure>'
    src = html.escape(shown(folder, path))
    bmp = html.escape(os.path.relpath(path, folder))
    return (f'<figure><a href="{bmp}"><img src="{src}" alt="{html.escape(caption)}" loading="lazy"></a>'
            f'<figcaption>{caption}<br><span class="dim">{describe(path)}</span></figcaption></figure>')


def main():
    if len(sys.argv) != 3:
        sys.exit("usage: gallery.py STEPS-FILE OUT-HTML")
    steps_file, out_html = sys.argv[1], sys.argv[2]
    folder = os.path.dirname(os.path.abspath(out_html))
    rows = []
    with open(steps_file, encoding="utf-8") as f:
        for line in f:
            parts = line.rstrip("\n").split("\t")
            if len(parts) < 8:
                continue
            rows.append(parts[:8])

    sections = []
    for row in rows:
        if not sections or sections[-1][0] != row[0]:
            sections.append((row[0], []))
        sections[-1][1].append(row)

    total_ms = sum(float(r[5]) for r in rows if r[5])
    failed = sum(1 for r in rows if r[6] != "ok")
    out = [
        "<!DOCTYPE html>",
        '<html lang="en"><head><meta charset="utf-8">',
        "<title>prism: results of the main job</title>",
        "<style>",
        "body{font:14px/1.4 sans-serif;margin:1em;background:#f4f4f4;color:#222}",
        "h1{font-size:1.5em;margin:0 0 .2em}h2{font-size:1.2em;margin:1.6em 0 .5em;border-bottom:1px solid #ccc}",
        ".grid{display:grid;grid-template-columns:repeat(auto-fill,minmax(560px,1fr));gap:12px}",
        ".card{background:#fff;border:1px solid #ddd;border-radius:6px;padding:8px}",
        ".card.bad{border-color:#c33;background:#fff3f3}",
        ".pair{display:flex;gap:8px;align-items:flex-start}",
        "figure{margin:0;flex:1;min-width:0;text-align:center}",
        "figure img{max-width:100%;max-height:360px;border:1px solid #bbb;background:"
        "repeating-conic-gradient(#ddd 0 25%,#fff 0 50%) 0 0/16px 16px}",
        "figcaption{font-size:12px;color:#555}.dim{color:#888}",
        ".op{margin-top:6px;font-weight:bold}",
        "code{font:12px monospace;background:#eef;padding:1px 3px;border-radius:3px;word-break:break-all}",
        ".time{float:right;color:#666;font-weight:normal}",
        "pre{background:#fff;border:1px solid #ddd;padding:8px;overflow:auto;margin:4px 0}",
        ".none{color:#999;padding:2em}",
        "</style></head><body>",
        "<h1>prism: results of the main job</h1>",
        f"<p>{len(rows)} steps, {total_ms:.0f} ms in all, "
        f"{'all succeeded' if not failed else str(failed) + ' failed'}. "
        "Each result stands beside its source at its own pixel size where it fits; click an image for the BMP file.</p>",
    ]
    for name, items in sections:
        out.append(f"<h2>{html.escape(name)}</h2>")
        texts = [r for r in items if not r[4]]
        images = [r for r in items if r[4]]
        for section, label, command, source, result, ms, status, output in texts:
            out.append(f'<div class="op">{html.escape(label)} <span class="time">{float(ms):.1f} ms</span></div>')
            out.append(f"<code>{html.escape(command)}</code>")
            out.append(f"<pre>{html.escape(output.replace(chr(31), chr(10)))}</pre>")
        if images:
            out.append('<div class="grid">')
            for section, label, command, source, result, ms, status, output in images:
                bad = "" if status == "ok" else " bad"
                out.append(f'<div class="card{bad}"><div class="pair">')
                out.append(figure(folder, source, "source"))
                if status == "ok":
                    # The viewer's steps save what its window showed.
                    shown_as = "screenshot" if command.startswith("prismview ") else "result"
                    out.append(figure(folder, result, shown_as))
                else:
                    out.append(f'<div class="pic none">failed: {html.escape(output)}</div>')
                out.append("</div>")
                out.append(f'<div class="op">{html.escape(label)} <span class="time">{float(ms):.1f} ms</span></div>')
                out.append(f"<code>{html.escape(command)}</code></div>")
            out.append("</div>")
    out.append("</body></html>")
    with open(out_html, "w", encoding="utf-8") as f:
        f.write("\n".join(out) + "\n")


if __name__ == "__main__":
    main()
