#!/usr/bin/env python3
"""property-lists-test.py APP HELPERS TEAM: the property lists of the application in the folder APP and of the helpers in the folder
HELPERS (LABEL-Info.plist, LABEL-Launchd.plist) say about each other what launchd's blessing asks for, and the application's names
what is in the bundle."""
import os
import plistlib
import sys

APP, HELPERS, TEAM = sys.argv[1:]
LABELS = ["com.norvik.InstallerHelper", "com.norvik.SupportPrivilegedHelper"]
faults = []


def load(*path):
    with open(os.path.join(*path), "rb") as file:
        return plistlib.load(file)


def equal(what, actual, expected):
    if actual != expected:
        faults.append(f"{what}: {actual!r}, expected {expected!r}")


def requirement(identifier):
    """Of a program of the team with a Developer ID certificate for applications."""
    return (f'identifier "{identifier}" and anchor apple generic'
            " and certificate 1[field.1.2.840.113635.100.6.2.6] exists"
            " and certificate leaf[field.1.2.840.113635.100.6.1.13] exists"
            f' and certificate leaf[subject.OU] = "{TEAM}"')


def client(identifier):
    return requirement(identifier) + ' and info[CFBundleVersion] >= "640"'


app = load(APP, "Contents", "Info.plist")
equal("the application's privileged executables", app["SMPrivilegedExecutables"],
      {label: requirement(label) for label in LABELS})
for label in LABELS:
    info = load(HELPERS, label + "-Info.plist")
    job = load(HELPERS, label + "-Launchd.plist")
    equal(f"{label}: identifier", info["CFBundleIdentifier"], label)
    equal(f"{label}: format", info["CFBundleInfoDictionaryVersion"], "6.0")
    equal(f"{label}: version", info["CFBundleVersion"], app["CFBundleVersion"])
    equal(f"{label}: clients", info["SMAuthorizedClients"],
          [client(app["CFBundleIdentifier"]), client("com.NORVIK.Install-Sentrel")])
    # Nothing about the program: launchd itself adds where it has put it. The transactions let a helper at work end its list
    # when the Mac is shut down.
    equal(f"{label}: job", job, {"EnableTransactions": True, "Label": label, "MachServices": {label: True},
                                  "AssociatedBundleIdentifiers": [app["CFBundleIdentifier"]]})
    with open(os.path.join(APP, "Contents", "Library", "LaunchServices", label), "rb") as file:
        program = file.read()
    for kind in ("Info", "Launchd"):
        with open(os.path.join(HELPERS, f"{label}-{kind}.plist"), "rb") as file:
            equal(f"{label}: {kind}.plist in its program", file.read() in program, True)

for key, value in {"CFBundleExecutable": "Uninstall Sentrel", "CFBundleName": "Uninstall Sentrel", "CFBundlePackageType": "APPL",
                   "CFBundleInfoDictionaryVersion": "6.0", "CFBundleShortVersionString": "6.4", "CFBundleDevelopmentRegion": "en",
                   "LSMinimumSystemVersion": "10.13",
                   "LSMinimumSystemVersionByArchitecture": {"x86_64": "10.13"},
                   "LSArchitecturePriority": ["x86_64"], "NSPrincipalClass": "NSApplication",
                   "NSHighResolutionCapable": True}.items():
    equal(key, app.get(key), value)
equal("copyright", "NORVIK" in app["NSHumanReadableCopyright"], True)
resources = os.path.join(APP, "Contents", "Resources")
tables = sorted(name[:-len(".lproj")] for name in os.listdir(resources) if name.endswith(".lproj"))
equal("localizations", sorted(app["CFBundleLocalizations"]), tables)
equal("the development region has tables", app["CFBundleDevelopmentRegion"] in tables, True)
for file in (app["CFBundleIconFile"], "SwiftRuntimeForCommandLineTools.pkg"):
    equal(f"{file!r} is in the resources", bool(file) and os.path.isfile(os.path.join(resources, file)), True)
for file in (os.path.join("MacOS", app["CFBundleExecutable"]), os.path.join("Frameworks", "UninstallerWindow.dylib")):
    equal(f"{file} is in the bundle", os.path.isfile(os.path.join(APP, "Contents", file)), True)

for fault in faults:
    print("FAULT:", fault, file=sys.stderr)
sys.exit(1 if faults else 0)
