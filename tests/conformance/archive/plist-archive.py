#!/usr/bin/python3
"""Reads and writes keyed archives with Python's plistlib, as an independent party would.

  plist-archive.py compare FILE JSON        whether FILE holds the objects that JSON describes
  plist-archive.py rewrite IN OUT           the objects of IN, archived anew
  plist-archive.py rewrite-other IN OUT     the same in the manner of other archivers: mutable containers, wrapped
                                            strings, URLs on bases and with trailing slashes, numbers for booleans
"""

import json
import plistlib
import sys
import urllib.parse
from plistlib import UID


class Object:
    """An object of a class that the product defines."""

    def __init__(self, class_names, keys):
        self.class_names = class_names
        self.keys = keys


class Url:
    def __init__(self, text):
        self.text = text


class Inline:
    """A value that stands in an object itself, without a reference."""

    def __init__(self, value):
        self.value = value


class Reader:
    def __init__(self, path):
        with open(path, "rb") as stream:
            self.archive = plistlib.load(stream, fmt=plistlib.FMT_BINARY)
        if self.archive["$archiver"] != "NSKeyedArchiver" or self.archive["$version"] != 100000:
            raise ValueError("not a keyed archive")
        self.objects = self.archive["$objects"]
        if self.objects[0] != "$null":
            raise ValueError("$objects does not begin with $null")

    def root(self):
        return self.value(self.archive["$top"]["root"])

    def value(self, reference):
        if not isinstance(reference, UID):
            return Inline(reference)
        content = self.objects[reference.data]
        if reference.data == 0:
            return None
        if not isinstance(content, dict):
            return content
        description = self.objects[content["$class"].data]
        names = description["$classes"]
        if names[0] != description["$classname"] or names[-1] != "NSObject":
            raise ValueError("odd class description: %r" % (description,))
        if "NSArray" in names:
            return [self.value(each) for each in content["NS.objects"]]
        if "NSURL" in names:
            base = self.value(content["NS.base"])
            relative = self.value(content["NS.relative"])
            return Url(relative if base is None else urllib.parse.urljoin(base.text, relative))
        if "NSString" in names:
            return content["NS.string"]
        keys = {key: self.value(each) for key, each in content.items() if key != "$class"}
        return Object(names, keys)


def json_form(value):
    if isinstance(value, Object):
        return {"class": value.class_names[0], **{key: json_form(each) for key, each in value.keys.items()}}
    if isinstance(value, list):
        return [json_form(each) for each in value]
    if isinstance(value, Url):
        parts = urllib.parse.urlsplit(value.text)
        if parts.scheme != "file" or parts.netloc:
            raise ValueError("not a file URL: " + value.text)
        path = urllib.parse.unquote(parts.path)
        return path.rstrip("/") or "/"
    return json_form(value.value) if isinstance(value, Inline) else value


class Writer:
    def __init__(self, like_others):
        self.like_others = like_others
        self.objects = ["$null"]
        self.classes = {}

    def archive(self, root):
        top = {"root": self.add(root)}
        return {"$version": 100000, "$archiver": "NSKeyedArchiver", "$top": top, "$objects": self.objects}

    def class_of(self, *names):
        if names not in self.classes:
            self.classes[names] = self.append({"$classname": names[0], "$classes": list(names)})
        return self.classes[names]

    def append(self, content):
        self.objects.append(content)
        return UID(len(self.objects) - 1)

    def add(self, value):
        if value is None:
            return UID(0)
        if isinstance(value, Object):
            content = {}
            reference = self.append(content)
            for key, each in value.keys.items():
                content[key] = each.value if isinstance(each, Inline) else self.add(each)
            content["$class"] = self.class_of(*value.class_names)
            return reference
        if isinstance(value, list):
            content = {}
            reference = self.append(content)
            content["NS.objects"] = [self.add(each) for each in value]
            mutable = ["NSMutableArray"] if self.like_others else []
            content["$class"] = self.class_of(*mutable, "NSArray", "NSObject")
            return reference
        if isinstance(value, Url):
            return self.url(value.text)
        if isinstance(value, str) and self.like_others:
            names = self.class_of("NSMutableString", "NSString", "NSObject")
            return self.append({"NS.string": value, "$class": names})
        if isinstance(value, bool) and self.like_others:
            return self.append(int(value))
        return self.append(value)

    def url(self, text):
        base = UID(0)
        if self.like_others and text != "file:///":
            folder, _, name = text.rstrip("/").rpartition("/")
            base = self.url_on(UID(0), folder + "/")
            text = name + "/"
        return self.url_on(base, text)

    def url_on(self, base, text):
        names = self.class_of("NSURL", "NSObject")
        return self.append({"NS.base": base, "NS.relative": self.add(text), "$class": names})


def main(arguments):
    if len(arguments) != 3 or arguments[0] not in ("compare", "rewrite", "rewrite-other"):
        print(__doc__, file=sys.stderr)
        return 2
    verb, source, other = arguments
    root = Reader(source).root()
    if verb == "compare":
        with open(other, encoding="utf-8") as stream:
            expected = json.load(stream)
        found = json_form(root)
        if found != expected:
            print("expected %s\nfound    %s" % (json.dumps(expected), json.dumps(found)), file=sys.stderr)
            return 1
        return 0
    archive = Writer(verb == "rewrite-other").archive(root)
    with open(other, "wb") as stream:
        plistlib.dump(archive, stream, fmt=plistlib.FMT_BINARY, sort_keys=verb == "rewrite")
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
