#!/usr/bin/env python3
"""Writes the seed corpus of the HEX reader fuzz target into corpus/hex_reader/.

A file named accept-* must pass Verify and one named reject-* must fail it;
the replay test holds the reader to that. Rerun after changing a seed here.
"""
import pathlib
import random

OUT = pathlib.Path(__file__).resolve().parent / "corpus" / "hex_reader"


def record(rtype, address, data, checksum_delta=0):
    body = bytes([len(data), (address >> 8) & 0xFF, address & 0xFF, rtype]) + bytes(data)
    checksum = (-sum(body) + checksum_delta) & 0xFF
    return ":" + (body + bytes([checksum])).hex().upper()


def linear(upper):
    return record(4, 0, [upper >> 8, upper & 0xFF])


EOF = record(1, 0, [])
rng = random.Random(0x1D008000)


def data_records(address, count, size=16):
    return [record(0, address + i * size, [rng.randrange(256) for _ in range(size)]) for i in range(count)]


def window_image(count=4):
    return [linear(0x1D00)] + data_records(0x8000, count)


def lines(items, eol="\r\n"):
    return "".join(item + eol for item in items)


seeds = {
    "accept-window-image.hex": lines(window_image() + [EOF]),
    "accept-lowercase-lf.hex": lines(window_image() + [EOF], "\n").lower(),
    "accept-cr-endings.hex": lines(window_image() + [EOF], "\r"),
    "accept-blank-lines.hex": "\r\n\n".join(window_image()) + "\r\n\r\n\n" + EOF + "\r\n",
    # Line ends are skipped wherever they fall, inside a record too.
    "accept-split-record.hex": (lambda r: lines([linear(0x1D00), r[:20] + "\r\n" + r[20:], EOF]))(data_records(0x8000, 1)[0]),
    "accept-segment-and-start-records.hex": lines([
        record(2, 0, [0x10, 0x00]), data_records(0x0000, 1)[0],
        record(3, 0, [0x00, 0x00, 0x12, 0x34]), linear(0x1D00), data_records(0x8000, 2)[0],
        record(5, 0, [0x9D, 0x00, 0x00, 0x00]), EOF]),
    "accept-count-255.hex": lines([linear(0x1D00), record(0, 0x8000, [rng.randrange(256) for _ in range(255)]), EOF]),
    "accept-no-eof-no-newline.hex": lines(window_image(), "\r\n").rstrip("\r\n"),
    # The reader stops at the end record; what follows is never looked at.
    "accept-text-after-eof.hex": lines(window_image(2) + [EOF]) + "garbage\x00\xff",
    # Verify checks records, not addresses: a hole in the image still reads.
    "accept-gap-in-window.hex": lines([linear(0x1D00)] + data_records(0x8000, 1) + data_records(0x8020, 1) + [EOF]),
    "accept-image-then-low-record.hex": lines([linear(0x1D00)] + data_records(0x8000, 8) + data_records(0x0000, 1) + [EOF]),
    "reject-no-eof-trailing-newline.hex": lines(window_image()),
    "reject-truncated.hex": lines(window_image() + [EOF])[:120],
    "reject-bad-checksum.hex": lines([linear(0x1D00)] + [record(0, 0x8000, list(range(16)), checksum_delta=1), EOF]),
    "reject-bad-start.hex": lines(window_image(2)) + ";" + EOF[1:] + "\r\n",
    # 'G' counts as 0 and the checksum is made to match, so only the digit is wrong.
    "reject-bad-hex-digit.hex": lines([linear(0x1D00), record(0, 0x8000, [0x00] + list(range(1, 16))).replace(":1080000000", ":108000000G", 1), EOF]),
    "reject-unknown-type-6.hex": lines([linear(0x1D00), record(6, 0, [0x01, 0x02]), EOF]),
    "reject-empty.hex": "",
}


def main():
    OUT.mkdir(parents=True, exist_ok=True)
    for old in OUT.iterdir():
        old.unlink()
    for name, text in seeds.items():
        (OUT / name).write_bytes(text.encode("latin-1"))


if __name__ == "__main__":
    main()
