#!/usr/bin/env python3
"""Writes the seeds that are no text, or made by another program, into the folder that is named."""

import struct
import subprocess
import sys
from pathlib import Path


def record(kind, content=b""):
    """A record of FastCGI."""
    return struct.pack(">BBHHBx", 1, kind, 1, len(content), 0) + content


BEGIN_REQUEST, PARAMS, STDIN, GET_VALUES = 1, 4, 5, 9
BEGIN = record(BEGIN_REQUEST, b"\0\1\0\0\0\0\0\0")
VARIABLES = b"\x09\x07PATH_INFO/config\x0c\x80\0\0\xc8QUERY_STRING" + b"a" * 200

NODE, NODE_END, PROPERTY, TREE_END = (struct.pack(">I", tag) for tag in (1, 2, 3, 9))


def text(name_at, value):
    """A property of a tree, whose name is at this place of the names."""
    return PROPERTY + struct.pack(">II", len(value), name_at) + value + bytes(-len(value) % 4)


def image(structure, names=b"description\0compatible\0"):
    head, reservations = 40, bytes(16)
    names_at = head + len(reservations) + len(structure)
    return struct.pack(">10I", 0xD00DFEED, names_at + len(names), head + len(reservations), names_at, head, 17, 16, 0,
                       len(names), len(structure)) + reservations + structure + names


ROOT = NODE + bytes(4) + text(0, b"1.2.3\0") + text(12, b"maker,brq4\0brq4\0")
CHILDREN = NODE + b"images\0\0" + NODE + b"kernel\0\0" + text(0, bytes(range(50))) + 2 * NODE_END
IMAGE = image(ROOT + CHILDREN + NODE_END + TREE_END)

CERTIFICATE = b"<cert>\n" + subprocess.run(
    ["openssl", "req", "-x509", "-nodes", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:P-256", "-keyout", "/dev/null",
     "-subj", "/O=Field, Ltd/OU=Lab/CN=vpn-1.example"], check=True, capture_output=True).stdout + b"</cert>\n"
FIRST = CERTIFICATE.index(b"MII")
ENCRYPTED = b"Proc-Type: 4,ENCRYPTED\nDEK-Info: AES-128-CBC,00112233445566778899AABBCCDDEEFF\n\n"

CHANGE = b'{"id":"c-1","who":"Anna \xc3\x96","patch":{"net/hostname":"a","x":null,"y":{"set":true},"z":5},' \
    b'"based_on":"12ab","expires":1795000000}'

REPORT = b'\1{"name":"m\xc3\xa4st","model":"x","firmware":"1","restart":true,"settings":{"net/hostname":"a","y":{"set":true}}}'
HEALTH = b'\2{"time":1795322738,"temperature":41.5,"load":0.2,"memory_total":9,"memory_used":3,"signal":-77,"uplink":"eth0"}'

SEEDS = {
    "certificate_text": [CERTIFICATE, CERTIFICATE.replace(b"cert>", b"ca>"), CERTIFICATE[:200] + b"</cert>",
                         CERTIFICATE[:FIRST] + ENCRYPTED + CERTIFICATE[FIRST:], b"</cert>\n" + CERTIFICATE[:200]],
    # A type, and as many bytes as its message has.
    "vexa_message": [struct.pack("<I", kind).ljust(size, fill) for fill in (b"\1", b"\xff")
                     for kind, size in ((8, 404), (8, 403), (9, 4), (14, 4), (15, 28), (21, 4), (22, 73))],
    "fastcgi_head": [BEGIN + record(PARAMS, VARIABLES) + record(PARAMS) + record(STDIN, b"body") + record(STDIN),
                     record(GET_VALUES, b"\x0f\0FCGI_MPXS_CONNS") + BEGIN + record(PARAMS),
                     BEGIN + record(PARAMS, b"\xff\xff\xff\xff\1x") + record(PARAMS)],
    "fleet_change": [CHANGE, CHANGE.replace(b"1795000000", b"1e300"), CHANGE.replace(b'"a"', b"[" * 600), CHANGE[:40]],
    "fleet_report": [b"\0true", REPORT, REPORT.replace(b'"a"', b"[" * 600), HEALTH, HEALTH.replace(b"41.5", b"1e300")],
    "firmware_image": [IMAGE, IMAGE.ljust(500, b"\0"), IMAGE[:100], image(NODE + bytes(4) + NODE_END + TREE_END)],
}

for target, seeds in SEEDS.items():
    folder = Path(sys.argv[1]) / target
    folder.mkdir(parents=True, exist_ok=True)
    for number, seed in enumerate(seeds):
        (folder / str(number)).write_bytes(seed)
