"""Shows the contents of the library's values in gdb: strings, numbers, dates, collections.

In gdb or in ~/.gdbinit:  source <this repository>/tools/gdb/zeb_printers.py
"""

import datetime
import struct

import gdb
import gdb.printing

KINDS = {
    0: "nil", 1: "null", 2: "Boolean", 3: "SignedInteger", 4: "UnsignedInteger", 5: "Float",
    6: "Double", 7: "Date", 16: "String", 17: "Data", 18: "URL", 19: "Array", 20: "Dictionary",
    21: "Set", 22: "OrderedSet", 23: "Object",
}
STORAGE_WIDE = 4
STORAGE_INDIRECT = 8
MAX_CHARACTERS = 200


def storage(payload, name):
    return gdb.Value(payload).cast(gdb.lookup_type("zeb::detail::" + name).pointer())


def string_at(payload):
    header = storage(payload, "StringStorage")
    flags = int(header["flags"])
    length = int(header["length"])
    unit = 2 if flags & STORAGE_WIDE else 1
    content = int(header + 1)
    if flags & STORAGE_INDIRECT:
        content = int(storage(payload, "MutableStringStorage")["data"])
    shown = min(length, MAX_CHARACTERS)
    data = gdb.selected_inferior().read_memory(content, shown * unit).tobytes() if shown else b""
    text = data.decode("utf-16-le" if unit == 2 else "ascii", "backslashreplace")
    return '"' + text.replace('"', '\\"') + '"' + ("..." if shown < length else "")


def elements(array):
    if int(array["flags"]) & STORAGE_INDIRECT:
        return storage(int(array), "MutableArrayStorage")["buffer"]
    return (array + 1).cast(gdb.lookup_type("zeb::Value").pointer())


class ValuePrinter:
    """A zeb::Value or one of the handles that derive from it."""

    def __init__(self, value):
        self.head = int(value["head_"])
        self.payload = int(value["payload_"])
        self.kind = KINDS.get(self.head & 0xFF, "?")

    def to_string(self):
        try:
            return self.content()
        except gdb.error:  # no debugging information about how such a value is stored
            return f"{self.kind} at {self.payload:#x}"

    def content(self):
        bits = struct.pack("<Q", self.payload)
        if self.kind in ("nil", "null"):
            return self.kind
        if self.kind == "Boolean":
            return "true" if self.payload else "false"
        if self.kind == "SignedInteger":
            return str(struct.unpack("<q", bits)[0])
        if self.kind == "UnsignedInteger":
            return str(self.payload)
        if self.kind == "Float":
            return repr(struct.unpack("<f", bits[:4])[0])
        if self.kind == "Double":
            return repr(struct.unpack("<d", bits)[0])
        if self.kind == "Date":
            seconds = struct.unpack("<d", bits)[0]
            try:
                reference = datetime.datetime(2001, 1, 1)
                return str(reference + datetime.timedelta(seconds=seconds)) + " UTC"
            except OverflowError:
                return f"{seconds} s since 2001-01-01"
        if self.kind == "String":
            return string_at(self.payload)
        if self.kind == "Data":
            return f"Data of {int(storage(self.payload, 'DataStorage')['length'])} bytes"
        if self.kind == "URL":
            return "URL " + ValuePrinter(storage(self.payload, "URLStorage")["text"]).to_string()
        if self.kind == "Array":
            return f"Array of {int(storage(self.payload, 'ArrayStorage')['count'])}"
        if self.kind in ("Dictionary", "Set", "OrderedSet"):
            count = int(storage(self.payload, "DictionaryStorage")["count"])
            return f"{self.kind} of {count}"
        return f"Object at {self.payload:#x}"

    def children(self):
        if self.kind == "Array":
            array = storage(self.payload, "ArrayStorage")
            for index in range(int(array["count"])):
                yield f"[{index}]", elements(array)[index]
        elif self.kind in ("Dictionary", "Set", "OrderedSet"):
            table = storage(self.payload, "DictionaryStorage")
            for index in range(int(table["used"])):
                entry = table["entries"][index]
                if int(entry["key"]["head_"]) & 0xFF == 0:
                    continue
                yield f"key {index}", entry["key"]
                if self.kind == "Dictionary":
                    yield f"value {index}", entry["value"]

    def display_hint(self):
        return {"Array": "array", "Dictionary": "map"}.get(self.kind)


class RefPrinter:
    """A zeb::Ref and the object that it refers to."""

    def __init__(self, value):
        self.object = value["object_"]

    def to_string(self):
        return f"Ref to {self.object}" if int(self.object) else "nil"


def register():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("zeb")
    handles = "Value|NS(Mutable)?(String|Array|Dictionary|Set|OrderedSet|Data)|NSNumber|NSDate|NSNull|NSURL"
    printers.add_printer("Value", f"^zeb::({handles})$", ValuePrinter)
    printers.add_printer("Ref", "^zeb::Ref<.*>$", RefPrinter)
    gdb.printing.register_pretty_printer(gdb.current_objfile(), printers, replace=True)


register()
