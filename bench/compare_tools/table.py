#!/usr/bin/python3
"""Turns bench/compare's raw timings into compare.md and compare.csv.

    table.py RAW.tsv OUT-DIR "COMMAND" REPS CLI_REPS MACHINE

RAW.tsv lines: row-id, operation, input, implementation, kind (lib|cli),
ms one thread, ms all threads (or empty), peak KB, note.
"""
import csv
import os
import sys

LIB_PEERS = ["Pillow", "OpenCV", "FreeImage", "Leptonica"]
CLI_PEERS = ["ImageMagick", "GraphicsMagick", "libvips"]


def runs(n):
    return "from a single run" if str(n) == "1" else f"the median of {n} runs"


def num(text):
    try:
        return float(text)
    except (TypeError, ValueError):
        return None


def main():
    raw, out_dir, command, reps, cli_reps, machine = sys.argv[1:7]
    versions = sys.argv[7] if len(sys.argv) > 7 else ""
    rows = []
    with open(raw, encoding="utf-8") as f:
        for line in f:
            parts = line.rstrip("\n").split("\t")
            if len(parts) >= 9:
                rows.append(parts[:9])
    order, ops = [], {}
    for r in rows:
        if r[0] not in ops:
            order.append(r[0])
            ops[r[0]] = {"label": r[1], "input": r[2], "impl": {}}
        ops[r[0]]["impl"][r[3]] = {"kind": r[4], "ms": num(r[5]), "mt": num(r[6]), "kb": num(r[7]), "note": r[8]}

    # The yardsticks: a copy into a fresh block (memcpy*) and into memory
    # already touched (memcpyw*); ratios are taken to the warm one.
    memcpy, fresh = {}, {}
    for rid in order:
        if rid.startswith("memcpy"):
            ours = ops[rid]["impl"].get("prism (library)")
            if ours and ours["ms"]:
                (memcpy if rid.startswith("memcpyw") else fresh)[ops[rid]["input"]] = ours["ms"]

    # CSV: one line per operation and implementation.
    os.makedirs(out_dir, exist_ok=True)
    with open(os.path.join(out_dir, "compare.csv"), "w", newline="", encoding="utf-8") as f:
        w = csv.writer(f)
        w.writerow(["operation", "input", "implementation", "measured", "ms_1_thread", "ms_all_threads",
                    "ratio_to_ours", "ours_to_memcpy", "peak_mb", "note"])
        for rid in order:
            op = ops[rid]
            ours_lib = op["impl"].get("prism (library)", {}).get("ms")
            ours_cli = op["impl"].get("prism (program)", {}).get("ms")
            for name, v in op["impl"].items():
                base = ours_cli if v["kind"] == "cli" else ours_lib
                ratio = f"{v['ms'] / base:.2f}" if v["ms"] and base else ""
                mc = memcpy.get(op["input"])
                ours_mc = f"{v['ms'] / mc:.1f}" if name.startswith("prism") and v["ms"] and mc and v["kind"] == "lib" else ""
                w.writerow([op["label"], op["input"], name, "in-process" if v["kind"] == "lib" else "whole process",
                            f"{v['ms']:.1f}" if v["ms"] else "", f"{v['mt']:.1f}" if v["mt"] else "", ratio,
                            ours_mc, f"{v['kb'] / 1024:.0f}" if v["kb"] else "", v["note"]])

    def cell(op, name, kind):
        v = op["impl"].get(name)
        if not v or not v["ms"]:
            return "–"
        ours = op["impl"].get("prism (library)" if kind == "lib" else "prism (program)", {}).get("ms")
        text = f"{v['ms']:.0f}" if v["ms"] >= 10 else f"{v['ms']:.1f}"
        if ours and not name.startswith("prism"):
            text += f" ({v['ms'] / ours:.1f}×)"
        if v["mt"] and not name.startswith("prism"):
            text += f" / {v['mt']:.0f}"
        if v["note"]:
            text += " " + v["note"]
        return text

    notes = {}

    def mark(note):
        if not note:
            return ""
        if note not in notes:
            notes[note] = f"[{len(notes) + 1}]"
        return notes[note]

    for rid in order:
        for v in ops[rid]["impl"].values():
            v["note"] = mark(v["note"])

    md = []
    md.append("## Performance")
    md.append("")
    md.append(f"Measured by `{command}` on {machine}, single-threaded for every library "
              "(a figure after a slash is the same peer with all its threads). In-process times are the median of "
              f"{reps} runs on an image already in memory (page faults of the result included); whole-process times (command-line programs, which also "
              f"load and save a BMP file) are {runs(cli_reps)}. Times in milliseconds; "
              "(N×) is the peer's time divided by ours, so above 1× means this library is faster. "
              "Inputs: 4000×3000 24-bit and 8-bit palette BMP, 6000×4000 1-bit BMP.")
    if versions:
        md.append("")
        md.append(f"Peers as packaged by Debian: {versions}.")
    md.append("")
    md.append("To measure again: `bench/compare` (installs the peers with apt-get where missing, builds this library "
              "and small timing programs, generates the inputs; `--reps N` and `--cli-reps N` set the repetitions, "
              "`--no-mt` skips the all-threads figures).")
    md.append("")
    md.append("### In-process (library calls)")
    md.append("")
    md.append("| operation | input | this library | ours ÷ warm memcpy | " + " | ".join(LIB_PEERS) + " |")
    md.append("|---|---|---:|---:|" + "---:|" * len(LIB_PEERS))
    for rid in order:
        op = ops[rid]
        if not any(v["kind"] == "lib" for v in op["impl"].values()) or rid.startswith("memcpy"):
            continue
        ours = op["impl"].get("prism (library)", {}).get("ms")
        mc = memcpy.get(op["input"])
        ratio = f"{ours / mc:.1f}" if ours and mc else "–"
        md.append(f"| {op['label']} | {op['input']} | {cell(op, 'prism (library)', 'lib')} | {ratio} | "
                  + " | ".join(cell(op, p, "lib") for p in LIB_PEERS) + " |")
    md.append("")
    md.append("memcpy yardsticks, the image's bytes copied by `memcpy` into memory already touched (warm; the "
              "ratio column divides by it): " + ", ".join(f"{k}: {v:.1f} ms" for k, v in memcpy.items())
              + "; into a fresh block, page faults included: " + ", ".join(f"{k}: {v:.1f} ms" for k, v in fresh.items()) + ".")
    md.append("")
    md.append("### Whole process (command-line programs: load BMP, operate, save BMP)")
    md.append("")
    md.append("| operation | input | `prism` | " + " | ".join(CLI_PEERS) + " |")
    md.append("|---|---|---:|" + "---:|" * len(CLI_PEERS))
    for rid in order:
        op = ops[rid]
        if not any(v["kind"] == "cli" for v in op["impl"].values()):
            continue
        md.append(f"| {op['label']} | {op['input']} | {cell(op, 'prism (program)', 'cli')} | "
                  + " | ".join(cell(op, p, "cli") for p in CLI_PEERS) + " |")
    md.append("")
    md.append("### Peak memory (MB, whole process)")
    md.append("")
    names = ["prism (library)"] + LIB_PEERS + ["prism (program)"] + CLI_PEERS
    md.append("| operation | " + " | ".join(n.replace("prism (library)", "ours, lib").replace("prism (program)", "`prism`") for n in names) + " |")
    md.append("|---|" + "---:|" * len(names))
    for rid in order:
        op = ops[rid]
        if rid.startswith("memcpy"):
            continue
        cells = []
        for n in names:
            v = op["impl"].get(n)
            cells.append(f"{v['kb'] / 1024:.0f}" if v and v["kb"] and v["ms"] else "–")
        md.append(f"| {op['label']} | " + " | ".join(cells) + " |")
    md.append("")
    md.append("– : the peer has no such operation (or it failed on this input). Python peers' memory includes "
              "the interpreter and its modules.")
    md.append("")
    if notes:
        md.append("Where an operation differs:")
        md.append("")
        for text, m in notes.items():
            md.append(f"- {m} {text}")
        md.append("")
    md.append("Full figures: `bench/results/compare.csv`.")
    with open(os.path.join(out_dir, "compare.md"), "w", encoding="utf-8") as f:
        f.write("\n".join(md) + "\n")


if __name__ == "__main__":
    main()
