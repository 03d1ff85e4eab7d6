"""Reads catalogues of translated texts."""

import re
import struct
import subprocess
from typing import NamedTuple


class Catalogue(NamedTuple):
    header: dict    # by the names of its lines
    messages: dict  # by the English texts, the first one where there are two: a text, or a list of them by number


def read_catalogue(path, wanted=None):
    """What of a .po file is translated; where `wanted` is given, only what sources have of which that is true."""
    chosen = path.read_bytes()
    if wanted:
        lines = re.findall("^#: (.*)$", chosen.decode("utf8"), re.MULTILINE)
        sources = filter(wanted, {source for line in lines for source in line.split()})
        chosen = _run("msggrep", *(f"--location={source}" for source in sources), "-", text=chosen)
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
