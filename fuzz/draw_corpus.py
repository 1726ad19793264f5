#!/usr/bin/env python3
"""Writes the seeds in fuzz/corpus: for each target a few inputs that reach deep, in the layout it reads."""
import pathlib
import struct

CORPUS = pathlib.Path(__file__).parent / "corpus"


def write(target, name, data):
    folder = CORPUS / target
    folder.mkdir(parents=True, exist_ok=True)
    (folder / name).write_bytes(data)


def wave_format(tag, channels, rate, bits, extension=b""):
    frame = channels * bits // 8
    return struct.pack("<HHIIHHH", tag, channels, rate, rate * frame, frame, bits, len(extension)) + extension


PCM_GUID = bytes.fromhex("0100000000001000800000aa00389b71")
EXTENSIBLE = wave_format(0xFFFE, 2, 48000, 32, struct.pack("<HI", 24, 3) + PCM_GUID)


def formats():
    write("format", "pcm16", wave_format(1, 2, 44100, 16))
    write("format", "pcm24", wave_format(1, 1, 48000, 24))
    write("format", "pcm8", wave_format(1, 2, 8000, 8))
    write("format", "alaw", wave_format(6, 1, 8000, 8))
    write("format", "extensible", EXTENSIBLE)


def wav(format_chunk, data, extra=b""):
    chunks = b"WAVE" + extra + b"fmt " + struct.pack("<I", len(format_chunk)) + format_chunk
    chunks += b"data" + struct.pack("<I", len(data)) + data
    return b"RIFF" + struct.pack("<I", len(chunks)) + chunks


def wav_files():
    write("wav", "stereo16", wav(wave_format(1, 2, 44100, 16)[:16], bytes(range(32))))
    write("wav", "mono24", wav(wave_format(1, 1, 48000, 24), bytes(range(30))))
    write("wav", "extensible", wav(EXTENSIBLE, bytes(range(32))))
    write("wav", "chunk_before", wav(wave_format(1, 2, 44100, 16), bytes(8), b"LIST\x03\0\0\0abc\0"))
    write("wav", "unfinished", wav(wave_format(1, 2, 44100, 16), bytes(8)).replace(
        b"data" + struct.pack("<I", 8), b"data\xff\xff\xff\xff"))


def setting(card, name, kind, data):
    return struct.pack("<BBBH", card, name, kind, len(data)) + data


def settings():
    path = "SYSTEM\\CurrentControlSet\0".encode("utf-16-le")
    numbers = b"".join(setting(0, name, 3, struct.pack("<I", 1)) for name in range(10))
    write("settings", "numbers", numbers)
    write("settings", "monitor", setting(0, 10, 3, struct.pack("<I", 64) + bytes(60)))
    write("settings", "texts", setting(0, 11, 1, "Studio\0".encode("utf-16-le")) + setting(1, 12, 1, path))
    write("settings", "wrong", setting(0, 9, 4, b"\1") + setting(0, 11, 1, b"odd") + setting(1, 12, 3, b""))


# By their place in the simulator's table.
BEGIN, MAP, QUEUE, START, COOKIE, ARM, ROUTINE, PCI, WRITE, BIND = 0, 1, 2, 3, 6, 9, 10, 16, 19, 22
ACQUIRE = 15


def request(code, data=b"", room=0, wait=0):
    return struct.pack("<BBB", 0, code, len(data)) + data + struct.pack("<HB", room, wait)


def requests():
    hand_over = request(BEGIN) + request(MAP, room=256) + request(COOKIE, bytes(8)) + request(QUEUE, bytes(4))
    channel = request(BIND, struct.pack("<II", 0, 2)) + request(ROUTINE, bytes(8)) + request(ACQUIRE)
    write("requests", "plays", channel + hand_over * 2 + request(ARM) + request(START, wait=255) + hand_over)
    write("requests", "registers", request(BIND, struct.pack("<II", 0, 0xFFFFFFFF)) +
          request(WRITE, struct.pack("<IIIII", 1, 8, 0, 0x55, 0xFF)) + request(PCI, bytes(4), room=16))
    write("requests", "unbound", b"".join(request(code, bytes(4), 64) for code in range(23)))


# Which client (1 the output, 0 the input), half milliseconds to wait after it, and the call.
def call(client, wait, action, *arguments):
    return bytes([client | wait << 1, action, *arguments])


def hand_in(client, header, length, choice=2, wait=0):
    return call(client, wait, 7, header, length & 255, length >> 8, 1, choice)


def open_16_bits(client):
    return call(client, 0, 0, 1, 1, 2, 0)


def messages():
    for name, client in (("plays", 1), ("records", 0)):
        write("messages", name, open_16_bits(client) + b"".join(hand_in(client, i, 1024) for i in range(4)) +
              call(client, 100, 2, 0) + call(client, 0, 4, 0, 1) + call(client, 0, 5, 0) + call(client, 0, 0, 0))
    write("messages", "loop", open_16_bits(1) + hand_in(1, 0, 512, 2 | 8) + hand_in(1, 1, 512, 2 | 16, 20) +
          call(1, 20, 6, 0, 1, 0, 0, 0) + call(1, 0, 1, 0))
    write("messages", "both", open_16_bits(1) + open_16_bits(0) + hand_in(0, 0, 2048) + call(0, 0, 2, 0) +
          call(1, 0, 3, 0) + hand_in(1, 0, 2048) + call(1, 40, 2, 0) + call(0, 0, 3, 0) + call(1, 0, 0, 0))


for draw in (formats, wav_files, settings, requests, messages):
    draw()
