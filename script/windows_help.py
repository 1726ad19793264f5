"""Writes help files of Windows: those that WinHelp opens, as of Windows 3.1.

A help file is a small file system. A B+ tree is its directory; the files in it that matter here are:

    |SYSTEM    title and windows
    |FONT      the fonts that text refers to by number
    |TOPIC     a chain of records: a header for each topic, and behind it one record for each paragraph
    |CONTEXT   hash of a topic's name -> place of the topic
    |CTXOMAP   context number -> place of the topic
    |TTLBTREE  place of the topic -> title

Places in |TOPIC are counted in two ways: a position in bytes (POSITION), and an offset in characters (OFFSET), each
with the number of the 4 KB block in its upper bits.
"""
import struct

NONE = 0xFFFFFFFF
BLOCK = 4096           # of |TOPIC
BLOCK_HEADER = 12
UNPACKED_BLOCK = 0x4000  # what a block's number counts in a position
PLAIN, BOLD = 0, 1     # numbers of fonts
PAGE = 2048            # of a B+ tree
DIRECTORY_PAGE = 1024


def small(value):
    """An unsigned number in one or two bytes."""
    return struct.pack("B", value << 1) if value < 0x80 else struct.pack("<H", value << 1 | 1)


def small_signed(value):
    if -0x40 <= value < 0x40:
        return struct.pack("B", (value + 0x40) << 1)
    return struct.pack("<H", (value + 0x4000) << 1 | 1)


def large_signed(value):
    """A signed number in two or four bytes."""
    if -0x4000 <= value < 0x4000:
        return struct.pack("<H", (value + 0x4000) << 1)
    return struct.pack("<I", (value + 0x40000000) << 1 | 1)


def name_hash(name):
    """How topics are referred to."""
    value = 0
    for character in name.lower():
        if "a" <= character <= "z":
            code = ord(character) - ord("a") + 17
        elif character.isdigit():
            code = int(character) or 10
        else:
            code = {".": 12, "_": 13}[character]
        value = (value * 43 + code) & 0xFFFFFFFF
    return value


def zero_ended(text):
    return text.encode("cp1252") + b"\0"


def packed(data):
    """As the reader unpacks it: a byte of flags, none of which is set, before every eight bytes."""
    return b"".join(b"\0" + data[i:i + 8] for i in range(0, len(data), 8))


def room():
    """The bytes of a block before they are packed."""
    return (BLOCK - BLOCK_HEADER) // 9 * 8


def internal_file(data):
    return struct.pack("<IIB", len(data) + 9, len(data), 4) + data


def tree(entries, structure, page_size=PAGE, flags=0x0002):
    """A B+ tree of (key, entry), both as bytes, of up to two levels."""
    leaves = [[]]
    for key, entry in entries:
        if sum(len(k) + len(e) for k, e in leaves[-1]) + len(key) + len(entry) > page_size - 8:
            leaves.append([])
        leaves[-1].append((key, entry))
    pages = []
    for number, leaf in enumerate(leaves):
        data = b"".join(key + entry for key, entry in leaf)
        following = number + 1 if number + 1 < len(leaves) else -1
        pages.append(struct.pack("<HHhh", page_size - 8 - len(data), len(leaf), number - 1, following) + data)
    root, levels = 0, 1
    if len(leaves) > 1:
        data = b"".join(leaf[0][0] + struct.pack("<H", number + 1) for number, leaf in enumerate(leaves[1:]))
        pages.append(struct.pack("<HHh", page_size - 6 - len(data), len(leaves) - 1, 0) + data)
        root, levels = len(pages) - 1, 2
    header = struct.pack("<HHH16sHHHHHHI", 0x293B, flags, page_size, structure, 0, 0, root, 0xFFFF, len(pages),
                         levels, len(entries))
    return header + b"".join(page.ljust(page_size, b"\0") for page in pages)


class Record:
    """One link of the chain in |TOPIC. What is known only when all have their places is filled in then."""
    HEADER = 21
    TOPIC, TEXT = 2, 0x20

    def __init__(self, kind, first, second, characters=0):
        self.kind, self.first, self.second, self.characters = kind, first, second, characters
        self.position = 0

    def size(self):
        return self.HEADER + len(self.first) + len(self.second)

    def data(self, before, after):
        return struct.pack("<IIIIIB", self.size(), len(self.second), before, after,
                           self.HEADER + len(self.first), self.kind) + self.first + self.second


class Topic:
    def __init__(self, name, title, number):
        self.name, self.title, self.number = name, title, number
        self.offset = 0
        self.header = Record(Record.TOPIC, b"\0" * 28, zero_ended(title))
        self.records = [self.header]
        self.paragraph([(BOLD, title, None)])

    def text(self, text, lead=""):
        """A paragraph; `lead` stands before it in bold letters."""
        self.paragraph([(BOLD, lead, None)] * bool(lead) + [(PLAIN, text, None)])

    def popup(self, text, name):
        """A line that shows another topic in a window of its own."""
        self.paragraph([(PLAIN, text, name)])

    def paragraph(self, runs):
        """The strings of the text and the commands between them are kept apart."""
        commands, strings = b"", b""
        for font, text, name in runs:
            commands += b"\x80" + struct.pack("<H", font)
            strings += b"\0"
            if name:
                commands += b"\xE2" + struct.pack("<I", name_hash(name))
                strings += b"\0"
            strings += zero_ended(text) if name else text.encode("cp1252")
            if name:
                commands += b"\x89"
        commands += b"\x82\xFF"
        strings += b"\0\0"
        space_after = 0x0004
        layout = struct.pack("<IH", 0x00000080, space_after) + small_signed(8)
        first = large_signed(len(strings)) + small(len(strings)) + layout + commands
        self.records.append(Record(Record.TEXT, first, strings, len(strings)))


class HelpFile:
    def __init__(self, title, window):
        self.title, self.window = title, window
        self.topics = []

    def topic(self, name, title, number):
        self.topics.append(Topic(name, title, number))
        return self.topics[-1]

    # --- the chain of topics ---

    def place(self):
        """Gives each record its block and position, each topic its offset; the records of each block."""
        blocks = [[]]
        used = characters = 0
        for topic in self.topics:
            for record in topic.records:
                if used + record.size() > room():
                    blocks.append([])
                    used = characters = 0
                number = len(blocks) - 1
                record.position = number * UNPACKED_BLOCK + used + BLOCK_HEADER
                if record is topic.header:
                    topic.offset = number * 0x8000 + characters
                blocks[-1].append(record)
                used += record.size()
                characters += record.characters
        return blocks

    def fill_headers(self):
        for number, topic in enumerate(self.topics):
            last = number + 1 == len(self.topics)
            topic.header.first = struct.pack(
                "<IIIIIII", sum(record.size() for record in topic.records), NONE, NONE, number, NONE,
                topic.records[1].position, NONE if last else self.topics[number + 1].header.position)

    def topic_file(self):
        blocks = self.place()
        self.fill_headers()
        chain = [record for block in blocks for record in block]
        before = dict(zip(chain[1:], chain))
        after = dict(zip(chain, chain[1:]))

        def position(record):
            return record.position if record else NONE
        data = b""
        last = last_topic = NONE
        for block in blocks:
            links = b"".join(r.data(position(before.get(r)), position(after.get(r))) for r in block)
            headers = [r.position for r in block if r.kind == Record.TOPIC]
            last_topic = headers[-1] if headers else last_topic
            data += (struct.pack("<III", last, block[0].position, last_topic) + packed(links)).ljust(BLOCK, b"\0")
            last = block[-1].position
        return data

    # --- the other files ---

    def system_file(self):
        # The window has a name; its place and size are left to the reader.
        window = struct.pack("<H10s9s51sHHHHH4B4B", 0x0007, b"secondary", self.window.encode(), self.title.encode(),
                             0, 0, 0, 0, 0, *[0] * 8)
        records = [(1, zero_ended(self.title)), (3, struct.pack("<I", self.topics[0].offset)), (6, window)]
        compressed = 4
        return struct.pack("<HHHIH", 0x036C, 21, 1, 0, compressed) + b"".join(
            struct.pack("<HH", kind, len(data)) + data for kind, data in records)

    @staticmethod
    def font_file():
        face = b"MS Sans Serif".ljust(20, b"\0")
        swiss, half_points = 3, 16
        fonts = [struct.pack("<BBBH6B", bold, half_points, swiss, 0, *[0] * 6) for bold in (0, 1)]
        return struct.pack("<HHHH", 1, len(fonts), 8, 8 + len(face)) + face + b"".join(fonts)

    def context_file(self):
        entries = sorted((struct.unpack("<i", struct.pack("<I", name_hash(t.name)))[0], t.offset) for t in self.topics)
        return tree([(struct.pack("<i", h), struct.pack("<I", o)) for h, o in entries], b"L4")

    def number_file(self):
        numbers = sorted((topic.number, topic.offset) for topic in self.topics)
        return struct.pack("<H", len(numbers)) + b"".join(struct.pack("<II", *pair) for pair in numbers)

    def title_file(self):
        return tree([(struct.pack("<I", topic.offset), zero_ended(topic.title)) for topic in self.topics], b"Lz")

    def data(self):
        files = {"|TOPIC": self.topic_file(), "|SYSTEM": self.system_file(), "|FONT": self.font_file(),
                 "|CONTEXT": self.context_file(), "|CTXOMAP": self.number_file(), "|TTLBTREE": self.title_file()}
        data = b"\0" * 16
        places = {}
        for name, content in files.items():
            places[name] = len(data)
            data += internal_file(content)
        directory = tree([(name.encode() + b"\0", struct.pack("<I", places[name])) for name in sorted(places)],
                         b"z4", DIRECTORY_PAGE, 0x0402)
        start = len(data)
        data += internal_file(directory)
        return struct.pack("<IIII", 0x00035F3F, start, NONE, len(data)) + data[16:]
