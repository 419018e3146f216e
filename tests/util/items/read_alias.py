#!/usr/bin/python3
"""A reader of alias files of its own, made from docs/items-folder.md alone.

    read_alias.py PATH
        prints where the alias file at PATH leads, its Finder information, and a line for each resource
"""
import os
import struct
import sys


def check(holds, what):
    if not holds:
        sys.exit(f"damaged: {what}")


def apple_double(data):
    magic, version, filler, count = struct.unpack_from(">II16sH", data)
    check((magic, version) == (0x51607, 0x20000) and filler == bytes(16), "AppleDouble header")
    entries = {}
    for i in range(count):
        kind, offset, length = struct.unpack_from(">III", data, 26 + 12 * i)
        check(offset + length <= len(data) and kind not in entries, f"entry {kind}")
        entries[kind] = data[offset : offset + length]
    check(sorted(entries) == [2, 9] and len(entries[9]) == 32, "entries")
    return entries[9], entries[2]


def resources(fork):
    data_at, map_at, data_size, map_size = struct.unpack_from(">IIII", fork)
    check(data_at + data_size == map_at and map_at + map_size == len(fork), "fork header")
    check(fork[map_at : map_at + 16] == fork[:16], "copy of the header")
    types_at, names_at = struct.unpack_from(">HH", fork, map_at + 24)
    types_at, names_at = types_at + map_at, names_at + map_at
    for i in range(struct.unpack_from(">H", fork, types_at)[0] + 1 & 0xFFFF):
        kind, last, references = struct.unpack_from(">4sHH", fork, types_at + 2 + 8 * i)
        for j in range(last + 1):
            at = types_at + references + 12 * j
            number, name_at, place, spare = struct.unpack_from(">hHII", fork, at)
            check(place < 1 << 24 and spare == 0, "reference")
            name = b""
            if name_at != 0xFFFF:
                length = fork[names_at + name_at]
                name = fork[names_at + name_at + 1 : names_at + name_at + 1 + length]
            length = struct.unpack_from(">I", fork, data_at + place)[0]
            check(place + 4 + length <= data_size, "data")
            yield kind, number, name, fork[data_at + place + 4 : data_at + place + 4 + length]


def pascal(field):
    check(field[0] < len(field) and not any(field[1 + field[0] :]), "name")
    return field[1 : 1 + field[0]].decode("mac_roman")


def alias_record(data):
    size, version, kind, _volume, signature, name, kind_of, creator, levels = struct.unpack_from(
        ">4xHHH28s4x2s6x64s8x4s4sI", data
    )
    check(size == len(data) and version == 2 and signature == b"H+" and levels == 0xFFFFFFFF, "alias record")
    parts, at = {}, 150
    while struct.unpack_from(">H", data, at)[0] != 0xFFFF:
        tag, length = struct.unpack_from(">HH", data, at)
        parts[tag] = data[at + 4 : at + 4 + length]
        at += 4 + length + length % 2
    check(at + 4 == size, "end of the alias record")
    root = os.fsdecode(parts[19]).rstrip("/")
    return (
        f"{('file', 'folder')[kind]} {pascal(name)} {kind_of.decode()} {creator.decode()} in "
        f"{parts[0].decode('mac_roman')}, path {root}{os.fsdecode(parts[18])}"
    )


path = sys.argv[1]
print("leads to", os.readlink(path))
with open(os.path.join(os.path.dirname(path), "._" + os.path.basename(path)), "rb") as file:
    info, fork = apple_double(file.read())
kind, creator, flags = struct.unpack_from(">4s4sH", info)
print(f"type {kind.decode('mac_roman')} creator {creator.decode('mac_roman')} flags {flags:#06x}")
for kind, number, name, data in resources(fork):
    text = alias_record(data) if kind == b"alis" else f"{len(data)} bytes"
    print(f"{kind.decode()} {number} '{name.decode('mac_roman')}': {text}")
