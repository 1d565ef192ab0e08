#!/usr/bin/env python3
"""A host in Python, through ctypes: its language, a product's name, a value in the suite's cookie.

    host.py [GUID]

The library is looked for as libbrevikconfig.so.0 where the system finds libraries, or, where
BREVIKCONFIG_LIBRARIES names a folder, there.
"""

import ctypes
import os
import sys

FOLDER = os.environ.get("BREVIKCONFIG_LIBRARIES", "")
PLATFORM = ctypes.CDLL(os.path.join(FOLDER, "libbrevikplatform.so.0"))
LIBRARY = ctypes.CDLL(os.path.join(FOLDER, "libbrevikconfig.so.0"))

# Blocks are void pointers: ctypes would turn a char pointer into a copy and lose the block.
FREE = PLATFORM.brevik_CoTaskMemFree
FREE.argtypes = [ctypes.c_void_p]
FREE.restype = None

LIBRARY.bvkc_GetUserLanguage_Ids.argtypes = [
    ctypes.POINTER(ctypes.c_uint16), ctypes.c_uint32, ctypes.POINTER(ctypes.c_uint16)]
LIBRARY.bvkc_CertificateItemValue.argtypes = [
    ctypes.c_char_p, ctypes.c_char_p, ctypes.POINTER(ctypes.c_void_p),
    ctypes.POINTER(ctypes.c_uint32)]
LIBRARY.bvkc_CertificateItemValue.restype = ctypes.c_uint8
LIBRARY.bvkc_VCM_ReadOndrelCookieValue.argtypes = [
    ctypes.c_char_p, ctypes.POINTER(ctypes.c_void_p)]
LIBRARY.bvkc_VCM_WriteOndrelCookieValue.argtypes = [ctypes.c_char_p, ctypes.c_char_p]


def language(offered):
    """The language to run in, or None."""
    selected = ctypes.c_uint16()
    array = (ctypes.c_uint16 * len(offered))(*offered)
    failed = LIBRARY.bvkc_GetUserLanguage_Ids(array, len(offered), ctypes.byref(selected))
    return None if failed else selected.value


def item(guid, name):
    """An item of the certificate with a GUID, or None."""
    block, size = ctypes.c_void_p(), ctypes.c_uint32()
    if not LIBRARY.bvkc_CertificateItemValue(
            guid.encode(), name.encode(), ctypes.byref(block), ctypes.byref(size)):
        return None
    try:
        return ctypes.string_at(block, size.value - 1).decode()
    finally:
        FREE(block)


def wide(text):
    """UTF-16 with its NUL; the second byte of it is the one that ctypes adds."""
    return text.encode("utf-16-le") + b"\0"


def cookie_value(key):
    """A value of the suite's own cookie, or None."""
    block = ctypes.c_void_p()
    result = LIBRARY.bvkc_VCM_ReadOndrelCookieValue(wide(key), ctypes.byref(block))
    try:
        if result != 0:
            return None
        size = 0
        while ctypes.string_at(block.value + size, 2) != b"\0\0":
            size += 2
        value = ctypes.string_at(block, size).decode("utf-16-le")
        return None if value == "-1" else value
    finally:
        FREE(block)


def main():
    print("of 1031, 1033 and 1036 I run in", language([1031, 1033, 1036]))
    if len(sys.argv) == 2:
        print("its name is", item(sys.argv[1], "QDR_ProductName") or "(unknown)")
    if LIBRARY.bvkc_VCM_WriteOndrelCookieValue(wide("volume"), wide("11")) != 0:
        sys.exit("the value could not be stored")
    print("the value of volume is", cookie_value("volume"))


if __name__ == "__main__":
    main()
