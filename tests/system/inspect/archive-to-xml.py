"""Rewrites a binary keyed archive (standard input) in the XML form (standard output), as other tools write it: a
reference becomes a dictionary with the only key CF$UID."""

import plistlib
import sys


def plain(value):
    if isinstance(value, plistlib.UID):
        return {"CF$UID": value.data}
    if isinstance(value, dict):
        return {key: plain(member) for key, member in value.items()}
    if isinstance(value, list):
        return [plain(member) for member in value]
    return value


archive = plistlib.loads(sys.stdin.buffer.read(), fmt=plistlib.FMT_BINARY)
sys.stdout.buffer.write(plistlib.dumps(plain(archive), fmt=plistlib.FMT_XML, sort_keys=False))
