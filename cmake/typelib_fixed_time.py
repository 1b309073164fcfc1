#!/usr/bin/env python3
"""Gives a type library that widl wrote a fixed time (0, 1 January 1970).

widl keeps the time of the build twice, as the custom data of the library:
the text "Created by WIDL version V at DATE\\n" (ctime, so widl runs with
TZ=UTC) and the same time as a number (VT_UI4). This widl reads no
SOURCE_DATE_EPOCH, so both are replaced here, in place and at the same
lengths, and the same sources give the same bytes at any time. A library that
does not hold exactly one of each is left alone and the build stops, so that
a widl that writes them otherwise is noticed.

Usage: typelib_fixed_time.py FILE.tlb
"""

import calendar
import re
import struct
import sys
import time

VT_UI4 = 0x13


def main(path):
    data = open(path, "rb").read()
    stamps = list(re.finditer(rb"Created by WIDL version [0-9.]+ at "
                              rb"([A-Z][a-z]{2} [A-Z][a-z]{2} [ 0-9]\d \d\d:\d\d:\d\d \d{4})\n", data))
    if len(stamps) != 1:
        sys.exit(f"{path}: {len(stamps)} texts of widl's time, not 1")
    text = stamps[0].group(1)
    seconds = calendar.timegm(time.strptime(text.decode("ascii"), "%a %b %d %H:%M:%S %Y"))
    number = struct.pack("<HI", VT_UI4, seconds)
    if data.count(number) != 1:
        sys.exit(f"{path}: {data.count(number)} numbers of widl's time {seconds}, not 1")
    fixed_text = time.asctime(time.gmtime(0)).encode("ascii")
    assert len(fixed_text) == len(text)
    data = data[:stamps[0].start(1)] + fixed_text + data[stamps[0].end(1):]
    data = data.replace(number, struct.pack("<HI", VT_UI4, 0))
    with open(path, "wb") as file:
        file.write(data)


if __name__ == "__main__":
    if len(sys.argv) != 2:
        sys.exit(__doc__)
    main(sys.argv[1])
