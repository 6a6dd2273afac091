#!/usr/bin/env python3
"""Rewrites the method table of README.md from frame/method_list.h and the
handlers of frame/vn*_ctrl.cpp (a method whose handler is declared with
VN_NOT_IMPLEMENTED answers E_NOTIMPL). The client tests check the result
against what the module really answers."""
import pathlib
import re
import subprocess
import sys

root = pathlib.Path(__file__).resolve().parent.parent
# --rev REV reads the sources as committed in REV instead of the work tree.
rev = sys.argv[sys.argv.index("--rev") + 1] if "--rev" in sys.argv else None


def source(path):
    if rev is None:
        return (root / path).read_text()
    return subprocess.run(["git", "-C", str(root), "show", f"{rev}:{path}"], check=True, capture_output=True,
                          text=True).stdout


methods = source("frame/method_list.h")
controls = [("VNArray", "ARRAY", "vnarray"), ("VNComplex", "COMPLEX", "vncomplex"),
            ("VNMatrix", "MATRIX", "vnmatrix"), ("VNStat", "STAT", "vnstat"), ("VNDSP", "DSP", "vndsp")]
rows = ["| Control | DISPID | Method | Parameters (* = by reference) | Returns | Status |",
        "|---|---|---|---|---|---|"]
counts = {}
for control, macro, file in controls:
    block = methods.split(f"#define VN_{macro}_METHODS(M)")[1].split("#define")[0]
    missing = set(re.findall(r"VN_NOT_IMPLEMENTED\((\w+)\)", source(f"frame/{file}_ctrl.cpp")))
    for m in re.finditer(r'M\((-?\d+), (\w+), (\w+), "[^"]*"((?:, ARG_\w+\(\w+\))*)\)', block):
        dispid, name, ret, params = m.groups()
        plist = []
        for kind, pname in re.findall(r"ARG_(\w+)\((\w+)\)", params):
            plist.append(("*" if kind == "OUT" else "") + pname + (" (optional)" if kind == "OPT" else ""))
        status = "not yet implemented" if name in missing else "implemented"
        counts.setdefault(control, [0, 0])[name in missing] += 1
        returns = {"VARIANT": "Variant", "VOID": "-", "R8": "Double", "I4": "Long"}[ret]
        rows.append(f"| {control} | {dispid} | {name} | {', '.join(plist)} | {returns} | {status} |")
summary = ", ".join(f"{c}: {v[0]} of {v[0] + v[1]}" for c, v in counts.items())
table = "\n".join(rows)
readme = root / "README.md"
text = readme.read_text()
begin, end = "<!-- methods:begin -->", "<!-- methods:end -->"
new = f"{begin}\nImplemented so far: {summary}.\n\n{table}\n{end}"
text = re.sub(re.escape(begin) + ".*?" + re.escape(end), lambda _: new, text, flags=re.S)
readme.write_text(text)
print(summary)
