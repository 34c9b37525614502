"""Reads what the build makes for administrators with readers that know nothing of the build.

documents_test.py SOURCE BUILD TEAM: the folders of sources and build, and the team identifier that the build was given.
"""

import pathlib
import plistlib
import subprocess
import sys
import tempfile
import unittest
import uuid

SOURCE, BUILD, TEAM = pathlib.Path(sys.argv[1]), pathlib.Path(sys.argv[2]), sys.argv[3]
MADE = BUILD / "deploy"
HELPERS = ["com.norvik.InstallerHelper", "com.norvik.SupportPrivilegedHelper"]


def read(path):
    """A property list as plistlib reads it, and as plistutil does."""
    ours = plistlib.loads(path.read_bytes())
    binary = subprocess.run(["plistutil", "-i", str(path), "-f", "bin"], check=True, stdout=subprocess.PIPE).stdout
    if plistlib.loads(binary) != ours:
        raise AssertionError(f"plistlib and plistutil read {path} differently")
    return ours


def payloads(profile):
    return [profile] + profile["PayloadContent"]


class Munki(unittest.TestCase):
    def test_the_item_removes_by_the_scripts(self):
        item = read(MADE / "RemoveSentrel.pkginfo")
        for key, script in (("uninstall_script", "uninstall.sh"), ("uninstallcheck_script", "uninstallcheck.sh")):
            self.assertEqual(item[key], (SOURCE / "deploy/munki" / script).read_text())
        self.assertEqual(item["uninstall_method"], "uninstall_script")
        self.assertIs(item["uninstallable"], True)
        self.assertEqual(item["installer_type"], "nopkg")
        self.assertRegex(item["version"], r"^\d+\.\d+\.\d+$")
        for key in ("name", "catalogs", "display_name", "minimum_os_version"):
            self.assertTrue(item[key], key)
        # It never installs anything.
        with tempfile.NamedTemporaryFile("w", suffix=".sh") as script:
            script.write(item["installcheck_script"])
            script.flush()
            self.assertEqual(subprocess.run(["sh", script.name], check=False).returncode, 1)


class Profiles(unittest.TestCase):
    def setUp(self):
        self.access = read(MADE / "full-disk-access.mobileconfig")
        self.background = read(MADE / "background-items.mobileconfig")

    def test_every_payload_has_what_a_payload_needs(self):
        seen = set()
        for payload in payloads(self.access) + payloads(self.background):
            self.assertEqual(payload["PayloadVersion"], 1)
            self.assertEqual(str(uuid.UUID(payload["PayloadUUID"])).upper(), payload["PayloadUUID"])
            self.assertTrue(payload["PayloadIdentifier"].startswith("com.norvik.remove-sentrel."))
            seen.add(payload["PayloadUUID"])
            seen.add(payload["PayloadIdentifier"])
        self.assertEqual(len(seen), 8)
        for profile in (self.access, self.background):
            self.assertEqual(profile["PayloadType"], "Configuration")
            self.assertEqual(profile["PayloadScope"], "System")

    def test_full_disk_access_goes_to_the_helper_as_the_application_states_it(self):
        (policy,) = self.access["PayloadContent"]
        self.assertEqual(policy["PayloadType"], "com.apple.TCC.configuration-profile-policy")
        ((service, (identity,)),) = policy["Services"].items()
        self.assertEqual(service, "SystemPolicyAllFiles")
        self.assertEqual(identity["IdentifierType"], "path")
        self.assertEqual(identity["Identifier"], "/Library/PrivilegedHelperTools/" + HELPERS[0])
        self.assertIs(identity["Allowed"], True)
        self.assertNotIn("Authorization", identity)
        # What launchd asks of the helper before it blesses it.
        with open(BUILD / "bin/Uninstall Sentrel.app/Contents/Info.plist", "rb") as stream:
            stated = plistlib.load(stream)["SMPrivilegedExecutables"][HELPERS[0]]
        self.assertEqual(identity["CodeRequirement"], stated)
        self.assertIn(f'"{TEAM}"', stated)

    def test_both_helpers_are_background_items_of_the_team(self):
        (policy,) = self.background["PayloadContent"]
        self.assertEqual(policy["PayloadType"], "com.apple.servicemanagement")
        self.assertEqual(
            policy["Rules"],
            [{"RuleType": "Label", "RuleValue": label, "TeamIdentifier": TEAM} for label in HELPERS],
        )

    def test_no_team_is_written_out(self):
        for template in (SOURCE / "deploy/profiles").iterdir():
            self.assertNotIn(TEAM, template.read_text())


class Kit(unittest.TestCase):
    def test_installation_gathers_the_kit_and_the_documents(self):
        with tempfile.TemporaryDirectory() as folder:
            subprocess.run(
                ["cmake", "--install", str(BUILD), "--component", "deploy", "--prefix", folder],
                check=True, stdout=subprocess.DEVNULL,
            )
            root = pathlib.Path(folder)
            self.assertEqual({each.name for each in root.iterdir()}, {"kit", "jamf", "munki", "profiles", "ansible"})
            self.assertEqual(
                {each.name for each in (root / "kit").iterdir()},
                {"remove-sentrel.sh", "sentrel-inspect", "Uninstall Sentrel.app"},
            )
            program = root / "kit/Uninstall Sentrel.app/Contents/MacOS/Uninstall Sentrel"
            for each in (root / "kit/remove-sentrel.sh", root / "kit/sentrel-inspect", program):
                self.assertTrue(each.stat().st_mode & 0o111, each)
            for each in ("jamf/policy.sh", "jamf/extension-attribute.sh", "munki/RemoveSentrel.pkginfo",
                         "profiles/full-disk-access.mobileconfig", "profiles/background-items.mobileconfig",
                         "ansible/remove-sentrel.yml", "ansible/roles/remove_sentrel/tasks/main.yml"):
                self.assertTrue((root / each).is_file(), each)


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
