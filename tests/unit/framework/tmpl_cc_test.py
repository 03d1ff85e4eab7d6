#!/usr/bin/env python3
"""Tests of the template compiler: what it refuses, and how it leaves its output file. What it takes, templates_test
renders."""

import re
import subprocess
import sys
import tempfile
import unittest
from pathlib import Path

SCRIPT = Path(__file__).resolve().parents[3] / "framework" / "tools" / "tmpl_cc.py"

sys.dont_write_bytecode = True
sys.path.insert(0, str(SCRIPT.parent))
import tmpl_cc  # noqa: E402


def errors_of(source):
    """The errors of one file."""
    compiler = tmpl_cc.Compiler("k")
    compiler.add_source("t.tmpl", source)
    compiler.finish()
    return compiler.errors


def in_template(body, parameters="int level,std::string const &id"):
    return (f"<% skin k %><% view V uses r::R %><% template t({parameters}) %>{body}"
            "<% end template %><% end view %><% end skin %>")


REFUSED_IN_TEMPLATE = [
    # Directives that are cut wrongly.
    ("<% if x\n%>", "must end on its line"), ("a<%b", "must end on its line"),
    ("<% <% if x %><% end %>", "must end on its line"), ("a\x1b", "Control characters"),
    # Unknown words.
    ("<% %>", "Unknown command"), ("<% x %>", "Unknown command"), ("<%if(x)%>", "Unknown command"),
    ("<% pgt \"a\" %>", "Unsupported"),
    # Expressions.
    *[(f"<%= {value} %>", "") for value in
      ("", "a[0]", "A::b", "_x", "f(1, 2)", '"text"', "5", "a+b", "!x", "a.", "x |", "x | f(", "x y")],
    ("<% include f %>", "Syntax error: include f"), ("<% include f(x,) %>", "No variable"),
    ("<% url k %>", "Syntax error: url k"), ('<% url "k" using a,b,c,d,e,f,g %>', "at most 6"),
    *[(f"<% {text} %>", "Syntax error") for text in
      ("gt", "gt a", 'gt "a","b","c"', 'gt "a" using', 'ngt "a","b"', 'ngt "a",n', 'ngt "a","b",5')],
    ('<% gt "a{1}" using "b" %>', "No variable"), ("<% form block w %>", "Syntax error"), ("<% c++ %>", "one whole line"),
    # Conditions and ends.
    *[(f"<% if {condition} %><% end %>", "Syntax error: if") for condition in
      ("", "x == 1", "not", "not rtl", "empty", "()", "( x", "!x")],
    ("<% if x %>A<% else %>B<% end if %>", "End of if does not match block else"),
    ("<% if x %><% else %><% elif y %><% end %>", "elif without if"), ("<% else %>", "else without if"),
    # Loops.
    ("<% foreach x in xs %><% end %>", "foreach without item"),
    ("<% foreach x in xs %><% item %><% end %><% separator %><% end %>", "Unexpected separator"),
    ("<% foreach x in xs %><% item %><% end %><% item %><% end %>", "Unexpected item"),
    ("<% foreach level in xs %><% item %><% end %><% end %>", "same name level"),
    ("<% foreach x as T in xs %><% item %><% end %><% end %>", "Syntax error: foreach"),
    ("<% foreach x rowid i in xs %><% item %><% end %><%= i %><% end %>", "only inside the item"),
]

REFUSED_IN_FILE = [
    ("<% skin k %>text<% end skin %>", "Content is not allowed"),
    ("<% view V uses R %><% end %>", "A view must stand directly inside a skin"),
    ("<% skin other %><% end skin %>", "two are named: k, other"),
    ("<% skin k %>", "Unexpected end of file t.tmpl: skin is not closed"),
    ("<% end %>", "no block is open"), ("<%= x %>", "inside a template only"),
    *[(f"<% skin k %><% view {head} %><% end %><% end %>", "Syntax error: view") for head in
      ("V", "V uses R<int>", "V extends B uses R")],
    ("<% skin k %><% view V uses R %><% end %><% view V uses R %><% end %><% end %>", "defined twice"),
    *[(in_template("", parameters), "") for parameters in
      ("int", "const T &x", "T *x", "int x=1", "int x, int x", "T &content")],
]


class Sources(unittest.TestCase):
    def test_refused(self):
        cases = [(in_template(body), message) for body, message in REFUSED_IN_TEMPLATE] + REFUSED_IN_FILE
        for source, message in cases:
            with self.subTest(source=source):
                errors = errors_of(source)
                self.assertEqual(len(errors), 1, errors)
                self.assertRegex(errors[0], r"^Error: .+ in file t\.tmpl, line \d+$")
                self.assertIn(message, errors[0])

    def test_lines_lead_back_to_the_template(self):
        code = tmpl_cc.Compiler("k")
        code.add_source('d\\"t.tmpl', in_template("\n\ntext\n<%= x %>\n"))
        lines = code.finish().splitlines()
        self.assertEqual(lines[lines.index(next(line for line in lines if "content.x" in line)) - 1].strip(),
                         '#line 4 "d\\\\\\"t.tmpl"')

    def test_one_mistake_is_one_message(self):
        source = in_template("\n<% if x == 1 %>\n<% foreach a in %>\n<% item %>"
                             "<% end %><% end %><% end %>\n<% oops %>")
        errors = errors_of(source)
        self.assertEqual([error.rsplit(" ", 1)[1] for error in errors], ["2", "3", "5"])


class CommandLine(unittest.TestCase):
    GOOD = in_template("\r\n").encode()

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        (self.folder / "good.tmpl").write_bytes(self.GOOD)
        (self.folder / "bad.tmpl").write_text("<% skin k %>\noops\n<% end view %>\n")
        (self.folder / "latin.tmpl").write_bytes(b"<% skin k %>\xe9<% end skin %>")

    def run_compiler(self, *arguments):
        return subprocess.run([sys.executable, SCRIPT, *arguments], cwd=self.folder,
                              capture_output=True, text=True, timeout=30, check=False)

    def test_success(self):
        result = self.run_compiler("-s", "k", "good.tmpl", "-o", "out.cpp")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        written = (self.folder / "out.cpp").read_text()
        self.assertIn('out()<<"\\n";', written)
        self.assertNotIn("\\r", written)
        self.assertEqual(self.run_compiler("good.tmpl").stdout, written)

    def test_failures_leave_no_output(self):
        before = set(self.folder.iterdir())
        for output, arguments, message in [
                ("out.cpp", ["bad.tmpl"], "Content is not allowed outside template blocks in file bad.tmpl, line 2"),
                ("out.cpp", ["good.tmpl", "missing.tmpl"], "Cannot read file missing.tmpl"),
                ("out.cpp", ["latin.tmpl"], "Cannot read file latin.tmpl"),
                ("./good.tmpl", ["good.tmpl"], "is both input and output"),
                ("no/such/out.cpp", ["good.tmpl"], "Cannot write file no/such/out.cpp")]:
            with self.subTest(output=output, arguments=arguments):
                result = self.run_compiler("-o", output, *arguments)
                self.assertEqual(result.returncode, 1)
                self.assertIn(message, result.stderr)
                self.assertNotIn("Traceback", result.stderr)
                self.assertEqual(set(self.folder.iterdir()), before)
        self.assertEqual((self.folder / "good.tmpl").read_bytes(), self.GOOD)
        (self.folder / "out.cpp").write_text("stale")
        result = self.run_compiler("-o", "out.cpp", "bad.tmpl", "bad.tmpl")
        self.assertEqual(re.findall(r"line (\d)", result.stderr), ["2", "3", "2", "3"])
        self.assertEqual(set(self.folder.iterdir()), before)


if __name__ == "__main__":
    unittest.main()
