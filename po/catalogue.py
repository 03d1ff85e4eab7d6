"""Reads catalogues of translated texts."""

import re
import struct
import subprocess
from typing import NamedTuple


class Catalogue(NamedTuple):
    header: dict    # by the names of its lines
    messages: dict  # by the English texts, the first one where there are two: a text, or a list of them by number


def read_catalogue(path, locations=()):
    """What of a .po file is translated; where locations are given, only what these sources, patterns, have."""
    chosen = path.read_bytes()
    if locations:
        chosen = _run("msggrep", *(f"--location={location}" for location in locations), "-", text=chosen)
    compiled = _run("msgfmt", "--output-file=-", "-", text=chosen)
    count, originals, translations = struct.unpack_from("<3I", compiled, 8)

    def text(table, number):
        length, start = struct.unpack_from("<2I", compiled, table + 8 * number)
        return compiled[start:start + length].decode("utf8").split("\0")

    messages = {}
    for number in range(count):
        english, shown = text(originals, number), text(translations, number)
        messages[english[0]] = shown if len(english) > 1 else shown[0]
    return Catalogue(dict(re.findall(r"^([\w-]+): (.*)$", messages.pop("", ""), re.MULTILINE)), messages)


def _run(*command, text):
    return subprocess.run(command, check=True, input=text, stdout=subprocess.PIPE).stdout
