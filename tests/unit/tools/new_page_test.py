#!/usr/bin/env python3
"""What tools/new-page makes of the model page: all that docs/pages.md promises, and it compiles."""

import json
import os
import re
import shlex
import shutil
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

ROOT = Path(__file__).resolve().parents[3]
BUILD = Path(os.environ.get("WEBCONFIG_BUILD", ROOT / "build/dev"))


class NewPage(unittest.TestCase):
    def test_has_what_is_promised_and_compiles(self):
        with tempfile.TemporaryDirectory() as folder:
            tree = Path(folder)
            for part in ("WebApps", "media", "tests/pages", "device/rootfs/usr/sbin"):
                shutil.copytree(ROOT / part, tree / part, ignore=shutil.ignore_patterns("node_modules"))
            said = subprocess.run([ROOT / "tools/new-page", "Clock", "--tree", tree], check=True, capture_output=True,
                                  text=True).stdout.split()
            self.check_files(tree, said)
            self.compile(tree, [name for name in said if re.search(r"WebApps/.*Clock.*\.cpp", name)])

    def check_files(self, tree, said):
        rows = re.findall(r"^\| (`.*?`) \|", (ROOT / "docs/pages.md").read_text(), re.MULTILINE)
        promised = " ".join(rows).replace("Clock.{h,cpp}", "Clock.h`, `WebApps/webconfig/forms/Clock.cpp")
        endings = re.findall(r"`(.*?)`", promised)
        self.assertEqual([name for name in said if not name.endswith(tuple(endings))], [])
        self.assertEqual(len(said), len(endings))
        for name in said:
            text = (tree / name).read_text()
            self.assertIn("clock", text.lower(), name)
            if "clock" in name.lower():
                self.assertNotIn("notice", text.lower(), name)

    def compile(self, tree, names):
        model = next(entry["command"] for entry in json.loads((BUILD / "compile_commands.json").read_text())
                     if entry["file"].endswith("settings/General.cpp"))
        options = re.sub(r"-include \S+|-Winvalid-pch|-o .*", "", model).replace(str(ROOT) + "/WebApps", f"{tree}/WebApps")
        options = shlex.split(options.replace(f"-I{ROOT} ", f"-I{tree} "))
        runs = [subprocess.Popen([*options, "-fsyntax-only", tree / name], cwd=BUILD) for name in names]
        self.assertEqual([run.wait() for run in runs], [0] * len(names))
        views = [tree / f"WebApps/webconfig/views/{view}.tmpl" for view in
                 ("Base", "BaseForm", "BaseTabbed", "BaseFormTabbed", "Clock")]
        subprocess.run([sys.executable, "-B", ROOT / "framework/tools/tmpl_cc.py", "-s", "webconfig", "-o", tree / "views.cpp",
                        *views], check=True)


if __name__ == "__main__":
    unittest.main()
