"""Compares what the library makes of files that others made with what independent readers make of them.

compare.py <Look> <folder of files> <work folder>
"""

import base64
import bz2
import ctypes
import os
import pathlib
import quopri
import re
import subprocess
import sys
import zipfile
import zlib

LOOK, FILES, WORK = sys.argv[1], pathlib.Path(sys.argv[2]), pathlib.Path(sys.argv[3])
failures = []

# What the library reads otherwise than the oracle, and why that is right.
ZIP_DIFFERENCES = {
    "test-baddirsz.zip": "declares a wrong size for its central directory, which is read all the same",
}


def look(*arguments):
    environment = dict(os.environ, LC_ALL="C", HOME=str(WORK))
    result = subprocess.run([LOOK, *map(str, arguments)], capture_output=True, env=environment, timeout=300)
    if result.returncode != 0 or result.stderr:
        failures.append(f"Look {arguments}: exit code {result.returncode}, {result.stderr[:200]!r}")
    return result.stdout.decode("ascii").splitlines()


def unhex(text):
    return bytes.fromhex(text[1:])


def expect(what, found, wanted):
    if found != wanted:
        failures.append(f"{what}: {str(found)[:300]} instead of {str(wanted)[:300]}")


def native_name(info):
    """The name as the archive's bytes mean it: UTF-8 if they are that, else byte by byte."""
    raw = info.orig_filename.encode("utf-8" if info.flag_bits & 0x800 else "cp437")
    try:
        name = raw.decode("utf-8")
    except UnicodeDecodeError:
        name = raw.decode("latin-1")
    return name


def oracle_entries(archive):
    """From name to content (None for a folder), the first of equal names."""
    entries = {}
    for info in archive.infolist():
        name = native_name(info)
        folder = name.endswith("/")
        if name not in entries:
            entries[name] = None if folder else archive.read(info)
    return entries


def compare_archive(path):
    target = WORK / "zip"
    subprocess.run(["rm", "-rf", target], check=True)
    target.mkdir(parents=True)
    lines = look("zip", path, target)
    found = {}
    if lines != ["no archive"]:
        for line in lines:
            name, kind, whole, file = line.split(" ")
            name = unhex(name).decode("utf-8")
            if kind == "folder":
                found[name] = None
            elif whole == "1":
                found[name] = pathlib.Path(file).read_bytes()
            else:
                # An entry without content answers false and leaves an empty target.
                found[name] = b""
                expect(f"{path.name}, {name}: the target of a refused entry", pathlib.Path(file).read_bytes(), b"")
    try:
        with zipfile.ZipFile(path) as archive:
            wanted = oracle_entries(archive)
    except (zipfile.BadZipFile, zlib.error, EOFError) as problem:
        wanted = f"no archive: {problem}"
        found = found if found else wanted
    difference = ZIP_DIFFERENCES.get(path.name)
    if difference is not None:
        if found == wanted:
            failures.append(f"{path.name}: is no longer different ({difference})")
        return 0
    expect(path.name, found, wanted)
    return len(wanted) if isinstance(wanted, dict) else 0


def compare_archives():
    paths = [path for ending in ("zip", "whl", "egg", "notzip") for path in sorted(FILES.rglob(f"*.{ending}"))]
    for encoded in FILES.rglob("*.zip.base64"):
        decoded = WORK / encoded.stem
        decoded.write_bytes(base64.b64decode(encoded.read_bytes()))
        paths.append(decoded)
    entries = sum(compare_archive(path) for path in paths)
    print(f"ZIP archives: {len(paths)}, {entries} entries equal, {len(ZIP_DIFFERENCES)} read where the oracle refuses")


def universal_lines(text):
    lines = re.split("\r\n|\r|\n", text)
    return lines[:-1] if lines[-1] == "" else lines


def compare_texts():
    read = refused = lines = 0
    for path in sorted(FILES.rglob("*")):
        if not path.is_file() or path.is_symlink() or path.suffix not in (".txt", ".py", ".go", ".pem", ".test"):
            continue
        content = path.read_bytes()
        if len(content) > 2_000_000 or b"\0" in content:
            continue
        if path.suffix in (".go", ".py") and zlib.crc32(content) % 8:
            continue
        try:
            marks = {b"\xff\xfe": "utf-16", b"\xfe\xff": "utf-16", b"\xef\xbb\xbf": "utf-8-sig"}
            encoding = next((name for mark, name in marks.items() if content.startswith(mark)), "utf-8")
            wanted = ["x" + line.encode("utf-8").hex().upper() for line in universal_lines(content.decode(encoding))]
            read += 1
            lines += len(wanted)
        except UnicodeDecodeError:
            wanted = ["unreadable"]
            refused += 1
        expect(str(path), look("text", path), wanted)
    print(f"text files: {read} read with {lines} lines equal, {refused} refused as no UTF-8")


def byte_lines(path):
    content = path.read_bytes()
    lines = content.split(b"\n")
    return lines[:-1] if lines[-1] == b"" else lines


def unicode_files():
    work = WORK / "NormalizationTest.txt"
    work.write_bytes(bz2.decompress(next(FILES.rglob("NormalizationTest.txt.bz2")).read_bytes()))
    normalization = WORK / "normalization"
    with open(normalization, "wb") as out:
        for line in work.read_text("utf-8").splitlines():
            columns = line.split("#")[0].split(";")[:5]
            if len(columns) == 5:
                for column in columns:
                    out.write("".join(chr(int(point, 16)) for point in column.split()).encode("utf-8") + b"\n")
    folding = WORK / "folding"
    with open(folding, "wb") as out:
        for line in next(FILES.rglob("CaseFolding.txt")).read_text("utf-8").splitlines():
            columns = line.split("#")[0].split(";")
            if len(columns) >= 3:
                for column in (columns[0], columns[2]):
                    out.write("".join(chr(int(point, 16)) for point in column.split()).encode("utf-8") + b"\n")
    every = WORK / "every"
    with open(every, "wb") as out:
        for point in range(1, 0x110000):
            if point != 10 and not 0xD800 <= point <= 0xDFFF:
                out.write(chr(point).encode("utf-8") + b"\n")
    return normalization, folding, every


def compare_utf8(paths):
    total = 0
    for path in paths:
        lines = byte_lines(path)
        wanted = ["".join(f"{ord(c):X} " for c in line.decode("utf-8")) + "same" for line in lines]
        expect(str(path), look("utf8", path), wanted)
        total += len(lines)
    print(f"UTF-8, both ways: {total} texts of Unicode's data equal")

    # Bytes that are UTF-8 by chance or not: the code pages of CPython's own tests.
    damaged = total = 0
    for path in sorted(FILES.rglob("cjkencodings/*.txt")) + sorted(FILES.rglob("test_email/data/*.txt")):
        wanted = []
        for line in byte_lines(path):
            try:
                wanted.append("".join(f"{ord(c):X} " for c in line.decode("utf-8")) + "same")
            except UnicodeDecodeError:
                wanted.append("brokenchanged")
                damaged += 1
        total += len(wanted)
        expect(str(path), look("utf8", path), wanted)
    print(f"UTF-8, foreign bytes: {total} texts, of which {damaged} are refused")


def compare_quoted_printable(paths):
    total = 0
    for path in list(paths) + sorted(FILES.rglob("cjkencodings/*-utf8.txt")):
        lines = byte_lines(path)
        found = look("qp", path)
        expect(f"{path}: lines", len(found), len(lines))
        for line, answer in zip(lines, found):
            encoded, same = answer.split(" ")
            expect(f"{path}: {line!r}", (quopri.decodestring(unhex(encoded)), same), (line, "same"))
        total += len(lines)
    print(f"quoted-printable: {total} texts decode to the same in an independent reader")


def compare_base64():
    paths = [path for path in sorted(FILES.rglob("*")) if path.is_file() and 0 < path.stat().st_size < 300_000][::40]
    for path in paths:
        expect(str(path), look("base64", path), [base64.b64encode(path.read_bytes()).decode("ascii")])
    print(f"Base64: {len(paths)} files encode as in an independent writer")


class Pcre:
    """PCRE itself, without the library."""

    def __init__(self):
        self.library = ctypes.CDLL("libpcre.so.3")
        self.library.pcre_compile.restype = ctypes.c_void_p

    def matches(self, pattern, subjects):
        error, offset = ctypes.c_char_p(), ctypes.c_int()
        code = self.library.pcre_compile(pattern, 0x800, ctypes.byref(error), ctypes.byref(offset), None)
        vector = (ctypes.c_int * 60)()
        for subject in subjects:
            answer = self.library.pcre_exec(ctypes.c_void_p(code), None, subject, len(subject), 0, 0, vector, 60)
            yield "none" if answer == -1 else f"{vector[0]} {vector[1]}" if answer >= 0 else f"error {answer}"


def compare_matches(paths):
    patterns = [rb"\p{Lu}", rb"\p{M}+", rb"^\p{Han}", rb"(?i)\x{e9}|\x{3c3}", rb"\X$", rb"[^\x00-\x7f]{2,}", rb"(?<n>.)\k<n>",
                rb"\w+\s", rb"(?i)k"]
    pcre = Pcre()
    total = 0
    for path in list(paths)[:2] + sorted(FILES.rglob("cjkencodings/*-utf8.txt")):
        lines = byte_lines(path)
        for pattern in patterns:
            expect(f"{path}: {pattern!r}", look("match", pattern.decode("ascii"), path), list(pcre.matches(pattern, lines)))
            total += len(lines)
    print(f"regular expressions: {total} searches end as in bare PCRE")


WORK.mkdir(parents=True)
compare_archives()
compare_texts()
unicode_paths = unicode_files()
compare_utf8(unicode_paths)
compare_quoted_printable(unicode_paths)
compare_base64()
compare_matches(unicode_paths)
for failure in failures[:40]:
    print("DIFFERENT:", failure)
sys.exit(1 if failures else 0)
