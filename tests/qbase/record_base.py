#!/usr/bin/python3
"""A reader and writer of record base files of its own, made from docs/record-base-file.md alone.

    record_base.py dump FILE
        prints what the file holds, one field a line
    record_base.py make FILE VERSION ORDER LENGTHS INDEX USERBLOCK
        writes a file: VERSION 1 or 2, ORDER little or big, LENGTHS the records' data lengths in data order
        (0,1,5), INDEX the records' places in index order (2,0,1), USERBLOCK hexadecimal digits or -. Byte j
        of record i is (7 i + j) mod 256; flags are i; the user fields are those of MADE.
"""
import struct
import sys

MAGIC = 0x51425345  # 'QBSE'
V2 = "IIHHiIIIHHIIIHHhhhhII"
V2_NAMES = (
    "magic type version typeVersion count recordsSize reserved1 reserved2 savedSortMode reserved3 userLong "
    "userData userFlags userWord userMode top left bottom right userBlockSize reserved4"
).split()
V1 = "IIHHIIHHIiI3I"
V1_NAMES = (
    "magic type version typeVersion userData userFlags savedSortMode userWord reserved1 count recordsSize "
    "r2 r3 r4"
).split()
MADE = dict(
    magic=MAGIC, type=0x54455354, typeVersion=3, savedSortMode=0, userLong=0x01020304, userData=0x11121314,
    userFlags=0x21222324, userWord=0x3132, userMode=0x4142, top=-1, left=2, bottom=-3, right=4,
)  # fmt: skip


def pad(length):
    return (length + 1) // 2 * 2


def dump(path):
    data = open(path, "rb").read()
    order = "<" if data[:4] == b"ESBQ" else ">"
    (version,) = struct.unpack_from(order + "H", data, 8)
    layout, names = (V1, V1_NAMES) if version == 1 else (V2, V2_NAMES)
    header = dict(zip(names, struct.unpack_from(order + layout, data)))
    for name in names:
        print(name, header[name])
    place = struct.calcsize(order + layout)
    user = data[place : place + header.get("userBlockSize", 0)]
    place += len(user)
    index = struct.unpack_from(f"{order}{header['count']}i", data, place)
    place += 4 * len(index)
    records = data[place:]
    assert len(records) == header["recordsSize"], "the records are not as long as the header says"
    print("userBlock", user.hex() or "-")
    for offset in index:
        size, length, flags = struct.unpack_from(order + "IiH", records, offset)
        assert size == 10 + pad(length), f"record at {offset}: size {size} for {length} bytes"
        print("record", offset, length, flags, records[offset + 10 : offset + 10 + length].hex() or "-")


def make(path, version, order, lengths, index, user):
    order = {"little": "<", "big": ">"}[order]
    lengths = [int(n) for n in lengths.split(",") if n]
    user = b"" if user == "-" else bytes.fromhex(user)
    records, offsets = b"", []
    for i, length in enumerate(lengths):
        offsets.append(len(records))
        content = bytes((7 * i + j) % 256 for j in range(length))
        records += struct.pack(order + "IiH", 10 + pad(length), length, i) + content + b"\0" * (length % 2)
    header = dict(
        MADE, version=int(version), count=len(lengths), recordsSize=len(records), userBlockSize=len(user)
    )
    layout, names = (V1, V1_NAMES) if version == "1" else (V2, V2_NAMES)
    with open(path, "wb") as out:
        out.write(struct.pack(order + layout, *[header.get(name, 0) for name in names]))
        out.write(user)
        for number in [int(n) for n in index.split(",") if n]:
            out.write(struct.pack(order + "i", offsets[number]))
        out.write(records)


{"dump": dump, "make": make}[sys.argv[1]](*sys.argv[2:])
