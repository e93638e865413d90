#!/usr/bin/env python3
"""Lists every C export of the public headers for the bad-argument sweep.

Usage: gen_sweep.py <include dir> <output .inc>

Reads include/zemath/*.h (not plainnames.h: its names are the companion library's and
collide with the C math library), finds each declaration `ZEMATH_API <ret> name(args)
[ZEMATH_NOEXCEPT];` and writes one line per export:

    ZEMATH_SWEEP_EXPORT(name, "header.h", "param1,param2,...")

or, for an export with a variable argument list (its prototype ends in `...`), a line
naming only its fixed parameters:

    ZEMATH_SWEEP_VARIADIC(name, "header.h", "param1")

whose arguments as read the harness takes from its table of variable argument lists.
The sweep deduces the parameter types from the real prototype; only the parameter names
come from here (they select the shapes of callbacks and name the arguments in reports).
The output is rewritten only when its content changes, so an untouched header set does not
rebuild the sweep.
"""
import pathlib
import re
import sys


def strip_comments(text):
    text = re.sub(r"/\*.*?\*/", " ", text, flags=re.S)
    text = re.sub(r"//[^\n]*", "", text)
    return "\n".join(line for line in text.splitlines() if not line.lstrip().startswith("#"))


def split_top_level(params):
    parts, depth, current = [], 0, ""
    for ch in params:
        if ch == "(":
            depth += 1
        elif ch == ")":
            depth -= 1
        if ch == "," and depth == 0:
            parts.append(current)
            current = ""
        else:
            current += ch
    if current.strip():
        parts.append(current)
    return [p.strip() for p in parts]


def parameter_name(param, index):
    pointer_to_function = re.search(r"\(\s*\*\s*([A-Za-z_]\w*)\s*\)", param)
    if pointer_to_function:
        return pointer_to_function.group(1)
    param = re.sub(r"\[[^\]]*\]", "", param).strip()
    match = re.search(r"([A-Za-z_]\w*)\s*$", param)
    keywords = {"int", "double", "float", "char", "short", "long", "unsigned", "signed",
                "bool", "void", "const", "size_t", "intptr_t"}
    if match and match.group(1) not in keywords and len(param.split()) > 1:
        return match.group(1)
    return "arg%d" % index


def exports_in(header):
    text = strip_comments(header.read_text())
    found = []
    for at in re.finditer(r"\bZEMATH_API\b", text):
        end = text.find(";", at.end())
        declaration = text[at.end():end]
        if "{" in declaration:
            continue
        open_paren = declaration.find("(")
        if open_paren < 0:
            continue
        name_match = re.search(r"([A-Za-z_]\w*)\s*$", declaration[:open_paren])
        if not name_match:
            continue
        depth, close = 0, -1
        for i in range(open_paren, len(declaration)):
            if declaration[i] == "(":
                depth += 1
            elif declaration[i] == ")":
                depth -= 1
                if depth == 0:
                    close = i
                    break
        params = split_top_level(declaration[open_paren + 1:close])
        if params == ["void"]:
            params = []
        variadic = bool(params) and params[-1] == "..."
        if variadic:
            params = params[:-1]
        names = [parameter_name(p, i) for i, p in enumerate(params)]
        found.append((name_match.group(1), names, variadic))
    return found


def main():
    include_dir = pathlib.Path(sys.argv[1])
    output = pathlib.Path(sys.argv[2])
    lines = ["// Written by tests/sweep/gen_sweep.py from the public headers; do not edit."]
    headers = sorted(p for p in (include_dir / "zemath").glob("*.h") if p.name != "plainnames.h")
    for header in headers:
        lines.append('#include "zemath/%s"' % header.name)
    lines.append("#ifdef ZEMATH_SWEEP_EXPORT")
    for header in headers:
        for name, params, variadic in exports_in(header):
            macro = "ZEMATH_SWEEP_VARIADIC" if variadic else "ZEMATH_SWEEP_EXPORT"
            lines.append('%s(%s, "%s", "%s")' % (macro, name, header.name, ",".join(params)))
    lines.append("#endif")
    content = "\n".join(lines) + "\n"
    if not output.exists() or output.read_text() != content:
        output.parent.mkdir(parents=True, exist_ok=True)
        output.write_text(content)


if __name__ == "__main__":
    main()
