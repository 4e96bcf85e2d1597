#!/usr/bin/env python3
"""Checks what the compiler can't: that every include points to a permitted place.

- A module includes only the modules that its zeb_module() declaration depends on. The declarations
  point down or sideways, never up, and never form a cycle.
- A module header includes all public headers of its module, the umbrella all module headers.
- Headers of the system and of outside libraries are included only in the modules that they belong
  to, and never in public headers.
- The product has no conditional compilation, and every header has #pragma once.
- Lines have at most 100 columns; the formatter does not wrap comments.
- The files that the documents name or link to exist.

Prints one `file:line: message` for each fault, and fails if there is any.
"""

import pathlib
import re
import sys

ROOT = pathlib.Path(__file__).resolve().parent.parent
# Each library's folder, and the prefix of a module's folder when its headers are included.
LIBRARIES = {"ZEBPlatform": "ZEBPlatform/", "ZEBUtilities": ""}

# The folders of the module headers, each of which includes all public headers of one module.
MODULE_HEADER_FOLDERS = {"ZEBPlatform": "ZEBPlatform", "ZEBUtilities": "ZEBUtilities/ZEBUtilities"}

# Includes all module headers of both libraries.
UMBRELLA = "ZEBUtilities/ZEBUtilities/ZEBUtilities.h"

# Modules of components that an installation may lack. Programs include their headers by name, so
# that the other module headers work without them.
MODULES_WITHOUT_HEADER = {"Security/SecretService"}

# Patterns of headers, and of the files that may include them; public headers never may. The first
# match counts. A header that is neither a module's, nor listed here, nor standard is a system
# header.
HEADER_HOMES = [
    (r"(e|i)mmintrin\.h", [r"ZEBPlatform/.*"]),
    (r"hwy/.*", [r"ZEBPlatform/Foundation/.*"]),
    (r"cxxabi\.h", [r"ZEBPlatform/.*"]),
    (r"simdjson.*", [r"ZEBPlatform/Json/.*"]),
    (r"fmt/.*", [r"ZEBPlatform/(Json|Logging)/.*"]),
    (r"spdlog/.*", [r"ZEBPlatform/Logging/.*"]),
    (r"unicode/.*", [r"ZEBPlatform/Text/.*"]),
    (r"libsecret/.*", [r"ZEBPlatform/Security/SecretService/.*"]),
    (r"(openssl|nettle)/.*|sqlite3\.h", [r"ZEBPlatform/Security/.*"]),
    (r"expat\.h", [r"ZEBPlatform/Bundle/.*"]),
    (r"zlib\.h", [r"ZEBUtilities/ZEBUtilities/Encodings/NSData\+ZlibAdditions\.cpp"]),
]
SYSTEM_HOME = [r"ZEBPlatform/Linux/.*"]

# Public headers whose purpose is to convert to an outside library's types.
PUBLIC_BRIDGES = {"ZEBPlatform/Foundation/fmt.h": r"fmt/.*"}

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

DOCUMENTS = ("README.md", "CONTRIBUTING.md", "CHANGELOG.md", "docs/")
# A link to a file of the project, or the path of a source in backticks.
FILE_REFERENCE = re.compile(
    r"\]\(([\w+-]*[./][\w/.+-]*)(?:#[\w-]*)?\)"
    r"|`((?:ZEB\w+|benchmarks|cmake|fuzz|tests|tools)/[\w/.+-]+\.\w+)`"
)

MAX_COLUMNS = 100
INCLUDE = re.compile(r'^\s*#\s*include\s*([<"])([^>"]+)[>"]')
CONDITIONAL = re.compile(r"^\s*#\s*(if|ifdef|ifndef|elif|else)\b")
MODULE_KEYWORDS = ("LAYER", "DEPENDS", "PRIVATE_LIBRARIES", "INSTALLED_DETAIL")

faults = []


def fault(file, line, message):
    faults.append(f"{file}:{line}: {message}")


class Module:
    def __init__(self, library, folder, declared_at):
        self.library = library
        self.folder = folder
        self.declared_at = declared_at
        self.layer = 0
        self.dependencies = []
        self.installed_details = []


def read_modules():
    """The zeb_module() declarations by folder, in their order."""
    modules = {}
    for library in LIBRARIES:
        name = f"{library}/CMakeLists.txt"
        text = re.sub(r"#[^\n]*", "", (ROOT / name).read_text(encoding="utf-8"))
        variables = {}
        for call in re.finditer(r"\b(set|zeb_module)\s*\(([^)]*)\)", text):
            arguments = call[2].split()
            expanded = []
            for argument in arguments:
                variable = re.fullmatch(r"\$\{(\w+)\}", argument)
                expanded += variables[variable[1]] if variable else [argument]
            if call[1] == "set":
                variables[expanded[0]] = expanded[1:]
                continue
            module = Module(library, expanded[0], (name, text.count("\n", 0, call.start()) + 1))
            keyword = None
            for argument in expanded[1:]:
                if argument in MODULE_KEYWORDS:
                    keyword = argument
                elif keyword == "LAYER":
                    module.layer = int(argument)
                elif keyword == "DEPENDS":
                    module.dependencies.append(argument)
                elif keyword == "INSTALLED_DETAIL":
                    module.installed_details.append(f"{argument}.h")
            modules[module.folder] = module
    return modules


def check_declarations(modules):
    """Finds cycles, too: they contain a dependency on a module that is declared later."""
    declared = set()
    for module in modules.values():
        for dependency in module.dependencies:
            if dependency not in declared:
                problem = "which is not declared before it"
            elif modules[dependency].layer > module.layer:
                problem = "which is in a higher layer"
            else:
                continue
            fault(*module.declared_at, f"{module.folder} depends on {dependency}, {problem}")
        declared.add(module.folder)


def is_public_header(file):
    return file.endswith(".h") and not file.endswith("Private.h") and "/detail/" not in file


def may_include(file, header):
    """Why the file must not include a header that belongs to no module, or None if it may."""
    if header in STANDARD_HEADERS:
        return None
    if re.fullmatch(PUBLIC_BRIDGES.get(file, "-"), header):
        return None
    known_homes = (homes for pattern, homes in HEADER_HOMES if re.fullmatch(pattern, header))
    homes = next(known_homes, SYSTEM_HOME)
    if not any(re.fullmatch(home, file) for home in homes):
        return f"<{header}> may be included only in its own module"
    if is_public_header(file):
        return f"<{header}> does not belong in a public header"
    return None


def check_source(file, text, modules, included):
    folder, _, name = file.rpartition("/")
    library, _, module_folder = folder.removesuffix("/detail").partition("/")
    module = modules.get(module_folder)
    if module is None or module.library != library:
        fault(file, 1, f"no zeb_module() declares the folder {folder}")
        return
    is_installed = is_public_header(file) or (
        folder.endswith("/detail") and name in module.installed_details
    )

    for number, line in enumerate(text.splitlines(), 1):
        if library == "ZEBUtilities" and CONDITIONAL.match(line):
            fault(file, number, "the product has no conditional compilation")
        include = INCLUDE.match(line)
        if not include:
            continue
        if include[1] == '"':
            fault(file, number, f'"{include[2]}" must be written as <Module/Header.h>')
            continue
        header_folder, _, header_name = include[2].rpartition("/")
        is_detail = header_folder.endswith("/detail")
        target = included.get(header_folder.removesuffix("/detail"))
        if target is None:
            objection = may_include(file, include[2])
            if objection:
                fault(file, number, objection)
            continue
        if target is not module and header_name.endswith("Private.h"):
            fault(file, number, f"<{include[2]}> is private to {target.folder}")
        elif target is not module and target.folder not in module.dependencies:
            fault(file, number, f"{module.folder} does not depend on {target.folder}")
        elif is_installed and header_name.endswith("Private.h"):
            fault(file, number, f"an installed header includes the private <{include[2]}>")
        elif is_installed and is_detail and header_name not in target.installed_details:
            message = f"an installed header includes <{include[2]}>, which is not installed"
            fault(file, number, message)


def module_headers(modules, sources):
    """What each module header must include, by its file."""
    expected = {UMBRELLA: []}
    for module in modules.values():
        folder = f"{module.library}/{module.folder}"
        names = (name.removeprefix(f"{folder}/") for name in sources if is_public_header(name))
        offered = [
            f"{LIBRARIES[module.library]}{module.folder}/{name}"
            for name in names
            if "/" not in name and f"{folder}/{name}" not in PUBLIC_BRIDGES
        ]
        if not offered or module.folder in MODULES_WITHOUT_HEADER:
            continue
        # A module in the folder of another one belongs to the other one's module header.
        parent, _, name = module.folder.rpartition("/")
        name = parent if parent in modules else name
        header = f"{MODULE_HEADER_FOLDERS[module.library]}/{name}.h"
        if header not in expected:
            expected[header] = []
            expected[UMBRELLA].append(header.removeprefix("ZEBUtilities/"))
        expected[header] += offered
    return expected


def check_module_header(file, text, expected):
    included = {match[2] for match in map(INCLUDE.match, text.splitlines()) if match}
    for header in sorted(set(expected) - included):
        fault(file, 1, f"does not include <{header}>")
    for header in sorted(included - set(expected)):
        fault(file, 1, f"includes <{header}>, which is not a public header of the module")


def check_document(file, text):
    for number, line in enumerate(text.splitlines(), 1):
        for link, path in FILE_REFERENCE.findall(line):
            target = ROOT / path if path else (ROOT / file).parent / link
            if not target.exists():
                fault(file, number, f"there is no {path or link}")


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
    modules = read_modules()
    check_declarations(modules)
    included = {LIBRARIES[module.library] + folder: module for folder, module in modules.items()}
    names = sorted(files())
    sources = [name for name in names if name.endswith((".h", ".cpp"))]
    collecting = module_headers(modules, sources)
    for file in sorted(set(collecting) - set(sources)):
        fault(file, 1, "the module header is missing")
    for file in sources:
        text = (ROOT / file).read_text(encoding="utf-8", errors="replace")
        if file.endswith(".h") and not re.search(r"^#pragma once$", text, re.MULTILINE):
            fault(file, 1, "#pragma once is missing")
        for number, line in enumerate(text.splitlines(), 1):
            if len(line) > MAX_COLUMNS:
                fault(file, number, f"has {len(line)} columns; wrap it at {MAX_COLUMNS}")
        if file in collecting:
            check_module_header(file, text, collecting[file])
        elif file.startswith(tuple(f"{library}/" for library in LIBRARIES)):
            check_source(file, text, modules, included)

    for file in names:
        if file.endswith(".md") and file.startswith(DOCUMENTS):
            check_document(file, (ROOT / file).read_text(encoding="utf-8"))

    for line in faults:
        print(line)
    return 1 if faults else 0


sys.exit(main())
