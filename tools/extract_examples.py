#!/usr/bin/env python3
"""Extracts the complete C++ programs from Markdown documents.

Usage: extract_examples.py OUTPUT_DIRECTORY DOCUMENT...

Each ```cpp block that contains `int main` becomes OUTPUT_DIRECTORY/<document>_<n>.cpp. If a ```text
block follows directly, it is the program's promised output and becomes the .txt file of the same
name. Prints one name per line. Files that did not change are not written, so that editing a
document's text does not recompile its examples.
"""

import pathlib
import re
import sys

BLOCK = re.compile(
    r"^```(?P<language>\w*)[^\n]*\n(?P<body>.*?)^```[ \t]*$", re.MULTILINE | re.DOTALL
)


def write_if_changed(path, content):
    if not path.exists() or path.read_text(encoding="utf-8") != content:
        path.write_text(content, encoding="utf-8")


def extract(document, directory):
    text = document.read_text(encoding="utf-8")
    blocks = list(BLOCK.finditer(text))
    names = []
    for block, following in zip(blocks, blocks[1:] + [None]):
        if block["language"] != "cpp" or "int main" not in block["body"]:
            continue
        name = f"{document.stem}_{len(names) + 1}"
        names.append(name)
        line = text.count("\n", 0, block.start("body")) + 1
        source = f'#line {line} "{document.name}"\n{block["body"]}'
        write_if_changed(directory / f"{name}.cpp", source)

        expected = directory / f"{name}.txt"
        directly_after = following and not text[block.end() : following.start()].strip()
        if directly_after and following["language"] == "text":
            write_if_changed(expected, following["body"])
        else:
            expected.unlink(missing_ok=True)
    return names


def main():
    directory = pathlib.Path(sys.argv[1])
    directory.mkdir(parents=True, exist_ok=True)
    for document in sys.argv[2:]:
        for name in extract(pathlib.Path(document), directory):
            print(name)


main()
