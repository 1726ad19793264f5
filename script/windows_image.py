"""What the checks of built Windows files read in them."""
import struct


class Image:
    """The parts of a 32-bit PE file that the checks look at."""

    def __init__(self, path):
        with open(path, "rb") as file:
            self.data = file.read()
        header = self.word("<I", 0x3C)
        if self.data[header:header + 4] != b"PE\0\0":
            raise ValueError("not a PE file")
        self.machine, sections = struct.unpack_from("<HH", self.data, header + 4)
        optional = header + 24
        if self.word("<H", optional) != 0x10B:
            raise ValueError("not a 32-bit image")
        self.os_version = struct.unpack_from("<HH", self.data, optional + 40)
        self.subsystem_version = struct.unpack_from("<HH", self.data, optional + 48)
        self.subsystem = self.word("<H", optional + 68)
        self.directories = [struct.unpack_from("<II", self.data, optional + 96 + 8 * i)
                            for i in range(self.word("<I", optional + 92))]
        table = optional + self.word("<H", header + 20)
        self.sections = []
        for i in range(sections):
            entry = table + 40 * i
            name = self.data[entry:entry + 8].rstrip(b"\0").decode()
            size, address, raw_size, raw = struct.unpack_from("<IIII", self.data, entry + 8)
            self.sections.append((name, address, size, raw, raw_size, self.word("<I", entry + 36)))

    def word(self, form, offset):
        return struct.unpack_from(form, self.data, offset)[0]

    def offset(self, address):
        """File offset of a relative virtual address."""
        for _, start, size, raw, raw_size, _ in self.sections:
            if start <= address < start + max(size, raw_size):
                return raw + address - start
        raise ValueError("address %#x is in no section" % address)

    def text(self, address):
        start = self.offset(address)
        return self.data[start:self.data.index(b"\0", start)].decode()

    def exports(self):
        address, size = self.directories[0]
        if not size:
            return []
        base = self.offset(address)
        functions, count = struct.unpack_from("<II", self.data, base + 20)
        names = self.offset(self.word("<I", base + 32)) if count else 0
        # A function exported by number alone has no name.
        found = [self.text(self.word("<I", names + 4 * i)) for i in range(count)]
        return sorted(found) + ["(unnamed)"] * (functions - count)

    def imports(self):
        address, size = self.directories[1]
        if not size:
            return {}
        found = {}
        entry = self.offset(address)
        while self.word("<I", entry + 12):
            library = self.text(self.word("<I", entry + 12))
            found[library] = []
            thunk = self.offset(self.word("<I", entry) or self.word("<I", entry + 16))
            while self.word("<I", thunk):
                value = self.word("<I", thunk)
                found[library].append("#%d" % (value & 0xFFFF) if value >> 31 else self.text(value + 2))
                thunk += 4
            entry += 20
        return found

    def resources(self):
        """{(type, name, language): bytes}"""
        address, size = self.directories[2]
        if not size:
            return {}
        base = self.offset(address)
        found = {}

        def walk(offset, path):
            named, numbered = struct.unpack_from("<HH", self.data, base + offset + 12)
            for i in range(named + numbered):
                key, child = struct.unpack_from("<II", self.data, base + offset + 16 + 8 * i)
                if key >> 31:
                    start = base + (key & 0x7FFFFFFF)
                    length = self.word("<H", start)
                    key = self.data[start + 2:start + 2 + 2 * length].decode("utf-16le")
                if child >> 31:
                    walk(child & 0x7FFFFFFF, path + (key,))
                else:
                    start, length = struct.unpack_from("<II", self.data, base + child)
                    start = self.offset(start)
                    found[path + (key,)] = self.data[start:start + length]

        walk(0, ())
        return found
