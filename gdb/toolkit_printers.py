# SPDX-License-Identifier: MIT
"""Pretty-printers of gdb for the values that a host sees most: TString, smart_ptr, Bytes, DateTime, Timestamp, and why
an operation of the library failed.

(gdb) source gdb/toolkit_printers.py                        in the sources
(gdb) source /usr/share/toolkit/toolkit_printers.py         from the package libtoolkit-dev, if gdb has not loaded them itself
"""

import datetime

import gdb
import gdb.printing

INVALID_TIME = -(1 << 63)


class TStringPrinter:
    """The text, whatever zeros it holds."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        data = self.value["_M_dataplus"]["_M_p"]
        return data.lazy_string(length=int(self.value["_M_string_length"]))

    def display_hint(self):
        return "string"


class SmartPtrPrinter:
    """The number of owners, and the object below."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        if int(self.value["m_pObject"]) == 0:
            return "smart_ptr, null"
        owners = int(self.value["m_pBlock"]["m_iCount"])
        return f"smart_ptr, {owners} owner{'' if owners == 1 else 's'}"

    def children(self):
        pointer = self.value["m_pObject"]
        if int(pointer) != 0:
            pointer = pointer.cast(pointer.dynamic_type)
            yield "get()", pointer
            if pointer.type.target().code != gdb.TYPE_CODE_VOID:
                yield "*", pointer.dereference()


class BytesPrinter:
    """The number of bytes, and the first of them in hexadecimal digits."""

    SHOWN = 32

    def __init__(self, value):
        self.value = value

    def to_string(self):
        size = int(self.value["m_uSize"])
        data = self.value["m_pData"]
        shown = min(size, self.SHOWN)
        digits = " ".join(f"{int(data[index]):02X}" for index in range(shown))
        rest = " ..." if shown < size else ""
        return f"{size} byte{'' if size == 1 else 's'}{': ' if size else ''}{digits}{rest}"


class DateTimePrinter:
    """The instant in UTC, as GetIsoString writes it, with its milliseconds."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        pointer = self.value["m_pDateTime"]
        if int(pointer) == 0:
            return "no time"
        milliseconds = int(pointer.dereference()["m_time"]["m_ll"])
        if milliseconds == INVALID_TIME:
            return "invalid"
        try:
            instant = datetime.datetime(1970, 1, 1) + datetime.timedelta(milliseconds=milliseconds)
        except OverflowError:
            return f"{milliseconds} ms since 1970-01-01 00:00:00 Z"
        return f"{instant:%Y-%m-%d %H:%M:%S}.{milliseconds % 1000:03} Z"


class TimestampPrinter:
    """The instant in UTC, as ToRfc3339 writes it with nine digits after the second."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        count = int(self.value["m_time"]["__d"]["__r"])
        instant = datetime.datetime(1970, 1, 1) + datetime.timedelta(seconds=count // 10**9)
        return f"{instant:%Y-%m-%dT%H:%M:%S}.{count % 10**9:09}Z"


class FailurePrinter:
    """The message."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        content = self.value["m_pContent"]
        if int(content) == 0:
            return "no failure"
        return TStringPrinter(content.dereference()["m_strMessage"]).to_string()

    def display_hint(self):
        return "string" if int(self.value["m_pContent"]) != 0 else None


class ResultPrinter:
    """The value, or the message of the failure."""

    def __init__(self, value):
        self.value = value

    def succeeded(self):
        flag = "m_bSucceeded" if "m_bSucceeded" in self.fields() else "m_value"
        return bool(self.value[flag] if flag == "m_bSucceeded" else self.value[flag]["_M_payload"]["_M_engaged"])

    def fields(self):
        return [field.name for field in self.value.type.strip_typedefs().fields()]

    def to_string(self):
        return "success" if self.succeeded() else "failure"

    def children(self):
        if not self.succeeded():
            yield "error()", self.value["m_failure"]
        elif "m_value" in self.fields():
            yield "*", self.value["m_value"]["_M_payload"]["_M_payload"]["_M_value"]


class FoldersPrinter:
    """The folder of the settings, which tells the application and its user."""

    def __init__(self, value):
        self.value = value

    def to_string(self):
        return TStringPrinter(self.value["m_pPaths"]["_M_ptr"]["m_config"]["_M_pathname"]).to_string()

    def display_hint(self):
        return "string"


class SettingsPrinter:
    """The path of the file."""

    def __init__(self, value):
        # A unique_ptr without a deleter of its own is one pointer.
        content = gdb.lookup_type("Toolkit::Settings::Content").pointer().pointer()
        self.content = value["m_pContent"].address.cast(content).dereference()

    def to_string(self):
        if int(self.content) == 0:
            return "moved from"
        return TStringPrinter(self.content.dereference()["m_path"]["_M_pathname"]).to_string()

    def display_hint(self):
        return "string" if int(self.content) != 0 else None


def build_printers():
    printers = gdb.printing.RegexpCollectionPrettyPrinter("toolkit")
    printers.add_printer("TString", r"^Toolkit::TString<(char|wchar_t)>$", TStringPrinter)
    printers.add_printer("smart_ptr", r"^Toolkit::smart_ptr<.*>$", SmartPtrPrinter)
    printers.add_printer("Bytes", r"^Toolkit::Bytes$", BytesPrinter)
    printers.add_printer("DateTime", r"^Toolkit::DateTime$", DateTimePrinter)
    printers.add_printer("Timestamp", r"^Toolkit::Timestamp$", TimestampPrinter)
    printers.add_printer("Folders", r"^Toolkit::Folders$", FoldersPrinter)
    printers.add_printer("Settings", r"^Toolkit::Settings$", SettingsPrinter)
    printers.add_printer("Failure", r"^Toolkit::Failure$", FailurePrinter)
    printers.add_printer("Result", r"^Toolkit::Result<.*>$", ResultPrinter)
    return printers


gdb.printing.register_pretty_printer(gdb.current_objfile(), build_printers(), replace=True)
