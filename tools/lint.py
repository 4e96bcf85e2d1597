#!/usr/bin/env python3
"""Checks what the compiler cannot: that every include points to where it may.

- A room includes only the rooms that its zeb_room() declaration depends on, and the declarations
  themselves point down or sideways, never up, and never in a circle.
- System and outside headers stay in their homes, out of the public headers.
- The product has no conditional compilation, every header has #pragma once, and no file holds a
  wording or path that means nothing outside its author's desk.

Prints one `file:line: message` for each fault and fails when there is any.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
STOREYS = ("Platform", "ZEBUtilities")

# The umbrella header offers the whole product, whatever the room it lies in depends on.
UMBRELLA = "ZEBUtilities/ZEBUtilities/ZEBUtilities.h"

# Where the headers that match may be included: path patterns, public headers excepted. The first
# match counts; what is neither a room's header, nor here, nor standard is a system header.
HEADER_HOMES = [
    (r"(e|i)mmintrin\.h", [r"Platform/.*"]),
    (r"cxxabi\.h", [r"Platform/.*"]),
    (r"simdjson.*", [r"Platform/Json/.*"]),
    (r"fmt/.*", [r"Platform/(Json|Logging)/.*"]),
    (r"spdlog/.*", [r"Platform/Logging/.*"]),
    (r"unicode/.*", [r"Platform/Text/.*"]),
    (r"(openssl|nettle|libsecret)/.*|sqlite3\.h", [r"Platform/Security/.*"]),
    (r"expat\.h", [r"Platform/Bundle/.*"]),
    (r"zlib\.h", [r"ZEBUtilities/ZEBUtilities/NSData\+ZlibAdditions\.cpp"]),
]
SYSTEM_HOME = [r"Platform/Linux/.*"]

# Public headers whose very job is to speak an outside library's types.
PUBLIC_BRIDGES = {"Platform/Foundation/fmt.h": r"fmt/.*"}

STANDARD_HEADERS = set(
    """
    algorithm any array atomic barrier bit bitset cassert cctype cerrno cfenv cfloat charconv chrono
    cinttypes climits clocale cmath codecvt compare complex concepts condition_variable coroutine
    csetjmp cstdarg cstddef cstdint cstdio cstdlib cstring ctime cuchar cwchar cwctype deque
    exception execution filesystem format forward_list fstream functional future initializer_list
    iomanip ios iosfwd iostream istream iterator latch limits list locale map memory memory_resource
    mutex new numbers numeric optional ostream queue random ranges ratio regex scoped_allocator
    semaphore set shared_mutex source_location span sstream stack stdexcept stop_token streambuf
    string string_view syncstream system_error thread tuple type_traits typeindex typeinfo
    unordered_map unordered_set utility valarray variant vector version
    """.split()
)

# Put together from pieces, so that this file passes its own check.
FORBIDDEN_WORDING = re.compile(
    (r"\b(?i:spec" r"ifications?)\b|\bspec" r"\.md|\bPart" r" [0-9]|/wo" r"rk/").encode()
)

INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
CONDITIONAL = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif|else)\b")
ROOM_KEYWORDS = ("FLOOR", "DEPENDS", "PRIVATE_LIBRARIES")

faults = []


def fault(file, line, message):
    faults.append(f"{file}:{line}: {message}")


class Room:
    def __init__(self, storey, folder, declared_at):
        self.storey = storey
        self.folder = folder
        self.declared_at = declared_at
        self.floor = 0
        self.dependencies = []


def read_rooms():
    """The zeb_room() declarations by folder, in their order."""
    rooms = {}
    for storey in STOREYS:
        name = f"{storey}/CMakeLists.txt"
        text = re.sub(r"#[^\n]*", "", (ROOT / name).read_text(encoding="utf-8"))
        variables = {}
        for call in re.finditer(r"\b(set|zeb_room)\s*\(([^)]*)\)", text):
            arguments = call[2].split()
            expanded = []
            for argument in arguments:
                variable = re.fullmatch(r"\$\{(\w+)\}", argument)
                expanded += variables[variable[1]] if variable else [argument]
            if call[1] == "set":
                variables[expanded[0]] = expanded[1:]
                continue
            room = Room(storey, expanded[0], (name, text.count("\n", 0, call.start()) + 1))
            keyword = None
            for argument in expanded[1:]:
                if argument in ROOM_KEYWORDS:
                    keyword = argument
                elif keyword == "FLOOR":
                    room.floor = int(argument)
                elif keyword == "DEPENDS":
                    room.dependencies.append(argument)
            rooms[room.folder] = room
    return rooms


def check_declarations(rooms):
    """Declaring dependencies first makes every circle visible as an arrow to a later room."""
    declared = set()
    for room in rooms.values():
        for dependency in room.dependencies:
            if dependency not in declared:
                problem = "which is not declared before it"
            elif rooms[dependency].floor > room.floor:
                problem = "which is on a higher floor"
            else:
                continue
            fault(*room.declared_at, f"{room.folder} depends on {dependency}, {problem}")
        declared.add(room.folder)


def is_public_header(file):
    return file.endswith(".h") and not file.endswith("Private.h")


def may_include(file, header):
    """Whether a header that belongs to no room may be included by the file; says why not."""
    if header in STANDARD_HEADERS:
        return None
    if re.fullmatch(PUBLIC_BRIDGES.get(file, "-"), header):
        return None
    known_homes = (homes for pattern, homes in HEADER_HOMES if re.fullmatch(pattern, header))
    homes = next(known_homes, SYSTEM_HOME)
    if not any(re.fullmatch(home, file) for home in homes):
        return f"<{header}> is outside its home"
    if is_public_header(file):
        return f"<{header}> does not belong in a public header"
    return None


def check_source(file, text, rooms):
    folder, _, _ = file.rpartition("/")
    storey, _, room_folder = folder.partition("/")
    room = rooms.get(room_folder)
    if room is None or room.storey != storey:
        fault(file, 1, f"no zeb_room() declares the folder {folder}")
        return

    for number, line in enumerate(text.splitlines(), 1):
        if storey == "ZEBUtilities" and CONDITIONAL.match(line):
            fault(file, number, "the product has no conditional compilation")
        include = INCLUDE.match(line)
        if not include:
            continue
        if include[1] == '"':
            fault(file, number, f'"{include[2]}" must be written from its root, as <Room/Header.h>')
            continue
        header_folder, _, header_name = include[2].rpartition("/")
        target = rooms.get(header_folder)
        if target is None:
            objection = may_include(file, include[2])
            if objection:
                fault(file, number, objection)
        elif target is room:
            if is_public_header(file) and header_name.endswith("Private.h"):
                fault(file, number, f"a public header includes the private <{include[2]}>")
        elif header_name.endswith("Private.h"):
            fault(file, number, f"<{include[2]}> is private to {target.folder}")
        elif file == UMBRELLA and target.storey == storey:
            continue
        elif target.folder not in room.dependencies:
            fault(file, number, f"{room.folder} does not depend on {target.folder}")


def files():
    """Every file of the project, relative to its root."""
    pending = [ROOT]
    while pending:
        for path in pending.pop().iterdir():
            if path.is_symlink() or path.name in (".git", ".cache", "__pycache__"):
                continue
            if path.is_dir():
                if path != ROOT / "build":
                    pending.append(path)
            else:
                yield path.relative_to(ROOT).as_posix()


def main():
    rooms = read_rooms()
    check_declarations(rooms)
    for file in sorted(files()):
        content = (ROOT / file).read_bytes()
        for wording in FORBIDDEN_WORDING.finditer(content):
            line = content.count(b"\n", 0, wording.start()) + 1
            fault(file, line, f"forbidden wording: {wording[0].decode(errors='replace')}")
        if not file.endswith((".h", ".cpp")):
            continue
        text = content.decode(encoding="utf-8", errors="replace")
        if file.endswith(".h") and not re.search(r"^#pragma once$", text, re.MULTILINE):
            fault(file, 1, "#pragma once is missing")
        if file.startswith(tuple(f"{storey}/" for storey in STOREYS)):
            check_source(file, text, rooms)

    for line in faults:
        print(line)
    return 1 if faults else 0


sys.exit(main())
