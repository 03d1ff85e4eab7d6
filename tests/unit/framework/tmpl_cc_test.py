#!/usr/bin/env python3
"""Tests of the template compiler: what it writes, what it refuses, and how it leaves its output file."""

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


def compile_source(source, skin="k", name="t.tmpl"):
    """The statements of one file without #line directives, and the errors."""
    compiler = tmpl_cc.Compiler(skin)
    compiler.add_source(name, source)
    code = [line.strip() for line in compiler.finish().splitlines() if not line.startswith("#line")]
    return code, compiler.errors


def in_template(body, parameters="int level,std::string const &id"):
    return (f"<% skin k %><% view V uses r::R %><% template t({parameters}) %>{body}"
            "<% end template %><% end view %><% end skin %>")


def statements(body):
    """What the body of a template compiles to, as one line."""
    code, errors = compile_source(in_template(body))
    if errors:
        raise AssertionError(errors)
    first = next(index for index, line in enumerate(code) if "translation_domain_scope" in line)
    last = next(index for index, line in enumerate(code) if line.startswith("private:"))
    return "".join(code[first + 1:last - 1])


def escaped(value):
    return f"out()<<cppcms::filters::escape({value});"


def loop(sequence, body, item="x", step="", row="", before="", after="", empty="", r=""):
    return (f"{{ if(booster::{r}begin({sequence})!=booster::{r}end({sequence})) {{{row}{before}"
            f"for(auto {item}_ptr=booster::{r}begin({sequence}),{item}_ptr_end=booster::{r}end({sequence});"
            f"{item}_ptr!={item}_ptr_end;++{item}_ptr{step}) {{ auto &{item}=*{item}_ptr;{body}}}{after}"
            + ("} else {" + empty if empty else "") + "}}")


def control(body):
    return f"{{ cppcms::form_context _form_context(out(),cppcms::form_flags::as_html); {body} }}"


def half(part, widget):
    return (f"_form_context.widget_part(cppcms::form_context::{part}_part); "
            f"{widget}.render_input(_form_context);")


ACCEPTED = [
    # Variables: a parameter or loop item stands for itself, anything else is a member of the record.
    ("<%= level %>", escaped("level")),
    ("<%=title%>", escaped("content.title")),
    ("<%=\ta.b()->c(1,\"x %> y\",-2) %>", escaped('content.a.b()->c(1,"x %> y",-2)')),
    ("<%= *p %><%= *level %>", escaped("*content.p") + escaped("*level")),
    ("<%= level.x %><%= level() %>", escaped("level.x") + escaped("content.level()")),
    ("<%= end_x %><%= form %>", escaped("content.end_x") + escaped("content.form")),
    ("<% c++ int n=3; %><%= n %>", "int n=3;" + escaped("content.n")),
    # Filters replace escaping and nest from left to right.
    ("<%= x | raw %>", "out()<<cppcms::filters::raw(content.x);"),
    ("<%= x|urlencode | ext f %>", "out()<<content.f(cppcms::filters::urlencode(content.x));"),
    ('<%= x | strftime("%Y|%m",id , -2.5) %>',
     'out()<<cppcms::filters::strftime(content.x,"%Y|%m",id,-2.5);'),
    # Conditions.
    ("<% if x %>a<% end if %>", 'if(content.x) {out()<<"a";}'),
    ("<%if not level%>a<%end%>", 'if(!(level)) {out()<<"a";}'),
    ("<% if empty a.b %><% elif not empty id %><% else %><% end else %>",
     "if(content.a.b.empty()) {} else if(!(id.empty())) {} else {}"),
    ("<% if (a[0] % 2 && f(\"(\") != '(') %><% end %>", "if(a[0] % 2 && f(\"(\") != '(') {}"),
    ("<% if x %><% elif ( y ) %><% end elif %>", "if(content.x) {} else if( y ) {}"),
    # Loops.
    ("<% foreach x in xs %><% item %><%= x.n %><% end item %><% end foreach %><%= x %>",
     loop("content.xs", escaped("x.n")) + escaped("content.x")),
    ("<% foreach x rowid i from 3 reverse in id %>A<% separator %>S<% item %><%= i %><% end %>C"
     "<% empty %>E<% end empty %>",
     loop("id", 'if(x_ptr!=booster::rbegin(id)) {out()<<"S";}' + escaped("i"), step=",++i", row=" int i = 3;",
          before='out()<<"A";', after='out()<<"C";', empty='out()<<"E";', r="r")),
    ("<% foreach x in xs %><% item %><% foreach y in x.ys %><% item %><%= x | raw %><% end %><% end %>"
     "<% end %><% end %>",
     loop("content.xs", loop("x.ys", "out()<<cppcms::filters::raw(x);", item="y"))),
    ("<% foreach x in a %><% item %><% end %><% end %><% foreach x in b %><% item %><% end %><% end %>",
     loop("content.a", "") + loop("content.b", "")),
    # Calls and links.
    ("<% include f() %><% include Base::g(level, \"a,b\",-1.5, x.y()) %>",
     'f();Base::g(level,"a,b",-1.5,content.x.y());'),
    ('href="<% url "/settings/reboot" %>"',
     'out()<<"href=\\"";content.app().mapper().map(out(), "/settings/reboot");out()<<"\\"";'),
    ('<% url "a" using level, x | raw %>',
     'content.app().mapper().map(out(), "a", cppcms::filters::urlencode(level), '
     'cppcms::filters::raw(content.x));'),
    # Widgets; the attributes stand between the halves of a whole control only.
    ("<% form input w %>",
     control(f"{half('first', 'content.w')} out()<<content.w.attributes_string(); "
             f"{half('second', 'content.w')}")),
    ("<% form begin level.w %><% form end *w %>",
     control(half("first", "level.w")) + control(half("second", "(*content.w)"))),
    ('<% form input row.at("{0}") %>', control(
        f"""{half('first', 'content.row.at("{0}")')} out()<<content.row.at("{{0}}").attributes_string(); """
        f"""{half('second', 'content.row.at("{0}")')}""")),
    # Code and text.
    ("<% c++ // remark %><%c++ for(;;) {%>x<%c++ }%>", '// remarkfor(;;) {out()<<"x";}'),
    ("100%> <b>'\"\\", 'out()<<"100%> <b>\'\\"\\\\";'),
    ("\n  <% if x %>\n\tA\n  <% end %>\n",
     'out()<<"\\n""  ";if(content.x) {out()<<"\\n""\\tA\\n""  ";}out()<<"\\n";'),
    ("<!-- if x --> caf\u00e9", 'out()<<"<!-- if x --> caf\u00e9";'),
]

REFUSED_IN_TEMPLATE = [
    # Directives that are cut wrongly.
    ("<% if x\n%>", "must end on its line"), ("<% c++ f('\"'); %>", "must end on its line"),
    ("<% c++ a %%>", "must end on its line"), ("a<%b", "must end on its line"),
    ("<% <% if x %><% end %>", "must end on its line"), ("a\x1b", "Control characters"),
    # Unknown words.
    ("<% %>", "Unknown command"), ("<%# remark %>", "Unknown command"), ("<% x %>", "Unknown command"),
    ("<% =x %>", "Unknown command"), ("<% item_name %>", "Unknown command"), ("<%if(x)%>", "Unknown command"),
    ("<% pgt \"a\" %>", "Unsupported"), ("<% gt \"a\" %>", "Unsupported"), ("<% xhtml %>", "Unsupported"),
    ("<% domain d %>", "Unsupported"), ("<% csrf %>", "Unsupported"), ("<% c++src f(); %>", "Unsupported"),
    # Expressions.
    *[(f"<%= {value} %>", "") for value in
      ("", "a[0]", "A::b", "_x", "x._y", "f(1, 2)", "f(y)", '"text"', "5", "a+b", "!x", "(x)", "a.", "x |",
       "x | f(", "x y", "x | A::b")],
    ("<% include f(\"a\"+x) %>", "Invalid parameters: '\"a\"+x'"),
    ("<% include f %>", "Syntax error: include f"),
    ("<% include f(x,) %>", "No variable"), ("<% include f(x) using A %>", "Syntax error"),
    ("<% include a::b::f() %>", "Syntax error"), ("<% url k %>", "Syntax error: url k"),
    ('<% url "k" using "a" %>', "No variable"), ('<% url "k" using a,b,c,d,e,f,g %>', "at most 6"),
    ("<% form input (w) %>", "Syntax error"), ("<% form block w %>", "Syntax error"),
    ("<% c++ %>", "one whole line"),
    ("<% c++ f(); \\ %>", "one whole line"),
    # Conditions and ends.
    *[(f"<% if {condition} %><% end %>", "Syntax error: if") for condition in
      ("", "x == 1", "not ( x )", "not", "empty", "rtl", "not rtl", "(a) && (b)",
       "()", "( x", "empty *x", "!x")],
    ("<% if x %>A<% else %>B<% end if %>", "End of if does not match block else"),
    ("<% if x %><% elif y %><% end if %>", "End of if does not match block elif"),
    ("<% if x %><% else %><% elif y %><% end %>", "elif without if"), ("<% else %>", "else without if"),
    ("<% if x %><% else y %><% end %>", "Syntax error: else y"),
    ("<% if x %><% endif %><% end %>", "Unknown command"),
    # Loops.
    ("<% foreach x in xs %><% end %>", "foreach without item"),
    ("<% foreach x in xs %><% separator %><% end %><% item %><% end %><% end %>",
     "A separator ends with its item only"),
    ("<% foreach x in xs %><% item %><% end %><% empty %><% end foreach %>",
     "End of foreach does not match block empty"),
    ("<% foreach x in xs %><% item %><% end %><% separator %><% end %>", "Unexpected separator"),
    ("<% foreach x in xs %><% item %><% end %><% item %><% end %>", "Unexpected item"),
    ("<% foreach x in xs %><% empty %><% item %><% end %><% end %>", "Unexpected empty"),
    ("<% foreach level in xs %><% item %><% end %><% end %>", "same name level"),
    ("<% foreach x rowid x in xs %><% item %><% end %><% end %>", "same name x"),
    ("<% foreach x as T in xs %><% item %><% end %><% end %>", "Syntax error: foreach"),
    ("<% foreach x reverse rowid i in xs %><% item %><% end %><% end %>", "Syntax error: foreach"),
    ("<% foreach x in xs %><%= x %><% item %><% end %><% end %>", "only inside the item"),
    ("<% foreach x rowid i in xs %><% item %><% end %><%= i %><% end %>", "only inside the item"),
]

REFUSED_IN_FILE = [
    ("text", "Content is not allowed outside template blocks"),
    ("<% skin k %>text<% end skin %>", "Content is not allowed"),
    ("<% skin k %><% view V uses R %>text<% end view %><% end skin %>", "Content is not allowed"),
    ("<% view V uses R %><% end %>", "A view must stand directly inside a skin"),
    ("<% skin k %><% template t() %><% end %><% end %>", "A template must stand directly inside a view"),
    ("<% skin k %><% skin k %><% end %><% end %>", "A skin must stand outside"),
    ("<% skin other %><% end skin %>", "two are named: k, other"),
    ("<% skin k %>", "Unexpected end of file t.tmpl: skin is not closed"),
    ("<% end %>", "no block is open"), ("<% if x %>", "inside a template only"),
    ("<%= x %>", "inside a template only"),
    *[(f"<% skin k %><% view {head} %><% end %><% end %>", "Syntax error: view") for head in
      ("V", "V uses", "V uses R<int>", "V uses R extends a::b::C",
       "V uses R abstract", "V extends B uses R")],
    ("<% skin k %><% view V uses R %><% end %><% view V uses R %><% end %><% end %>", "defined twice"),
    *[(in_template("", parameters), "") for parameters in
      ("int", "unsigned int", "const T &x", "T *x", "std::vector<int> x", "int x=1", "int x, int x",
       "T &content", "unsigned int x", "int _x")],
    (in_template("").replace("t(", "V("), "cannot be the name of a template"),
    (in_template("").replace("t(", "= 0 t("), "Syntax error: template"),
]


class Statements(unittest.TestCase):
    maxDiff = None

    def test_accepted(self):
        for body, expected in ACCEPTED:
            with self.subTest(body=body):
                self.assertEqual(statements(body), expected)

    def test_refused(self):
        cases = [(in_template(body), message) for body, message in REFUSED_IN_TEMPLATE] + REFUSED_IN_FILE
        for source, message in cases:
            with self.subTest(source=source):
                _, errors = compile_source(source)
                self.assertEqual(len(errors), 1, errors)
                self.assertRegex(errors[0], r"^Error: .+ in file t\.tmpl, line \d+$")
                self.assertIn(message, errors[0])

    def test_parameters_end_with_their_template(self):
        source = in_template("<%= level %>").replace(
            "<% end view %>", "<% template u() %><%= level %><% end template %><% end view %>")
        code, errors = compile_source(source)
        self.assertEqual(errors, [])
        self.assertEqual([line for line in code if "escape" in line],
                         [escaped("level"), escaped("content.level")])

    def test_views(self):
        compiler = tmpl_cc.Compiler()
        compiler.add_source("a.tmpl", '<% c++ #include "x.h" %>\n<% skin k %><% view A uses ::r::A %>'
                                      "<% c++ int helper(); %><% end view %><% end skin %>")
        compiler.add_source("b.tmpl", "<% skin %><% view B uses r::B extends A %><% end %>"
                                      "<% view C uses r::C extends ui::Base %><% end %><% end %>")
        self.assertEqual(compiler.errors, [])
        code = compiler.finish()
        for piece in ('#include "x.h"', "struct A : public cppcms::base_view {", "::r::A &content;",
                      "A(std::ostream &_s,::r::A &_content) : cppcms::base_view(_s),content(_content),",
                      "struct B : public A {",
                      "B(std::ostream &_s,r::B &_content) : A(_s,_content),content(_content),",
                      "struct C : public ui::Base {", 'skin_generator.name("k");'):
            self.assertIn(piece, code)
        self.assertEqual(re.findall(r"add_view<(.*?)>\(\"(\w+)\",true\)", code),
                         [("k::A,::r::A", "A"), ("k::B,r::B", "B"), ("k::C,r::C", "C")])

    def test_lines_lead_back_to_the_template(self):
        code = tmpl_cc.Compiler("k")
        code.add_source('d\\"t.tmpl', in_template("\n\ntext\n<%= x %>\n"))
        lines = code.finish().splitlines()
        self.assertEqual(lines[lines.index(next(line for line in lines if "content.x" in line)) - 1].strip(),
                         '#line 4 "d\\\\\\"t.tmpl"')

    def test_one_mistake_is_one_message(self):
        source = in_template("\n<% if x == 1 %>\n<% foreach a in %>\n<% item %>"
                             "<% end %><% end %><% end %>\n<% oops %>")
        _, errors = compile_source(source)
        self.assertEqual([error.rsplit(" ", 1)[1] for error in errors], ["2", "3", "5"])


class CommandLine(unittest.TestCase):
    GOOD = ("<% skin k %><% view V uses r::R %><% template render() %>\r\n"
            "<% end template %><% end view %><% end skin %>\n")

    def setUp(self):
        folder = tempfile.TemporaryDirectory()
        self.addCleanup(folder.cleanup)
        self.folder = Path(folder.name)
        (self.folder / "good.tmpl").write_bytes(self.GOOD.encode())
        (self.folder / "bad.tmpl").write_text("<% skin k %>\noops\n<% end view %>\n")
        (self.folder / "empty.tmpl").write_text("<% c++ #include <string> %>\n")
        (self.folder / "latin.tmpl").write_bytes(b"<% skin k %>\xe9<% end skin %>")

    def run_compiler(self, *arguments):
        return subprocess.run([sys.executable, SCRIPT, *arguments], cwd=self.folder,
                              capture_output=True, text=True, timeout=30, check=False)

    def files(self):
        return sorted(path.name for path in self.folder.iterdir())

    def test_success(self):
        result = self.run_compiler("-s", "k", "good.tmpl", "-o", "out.cpp")
        self.assertEqual((result.returncode, result.stdout, result.stderr), (0, "", ""))
        written = (self.folder / "out.cpp").read_text()
        self.assertIn('out()<<"\\n";', written)
        self.assertNotIn("\\r", written)
        self.assertEqual(self.run_compiler("good.tmpl").stdout, written)

    def test_failures_leave_no_output(self):
        before = self.files()
        for arguments, message in [
                (["bad.tmpl"], "Content is not allowed outside template blocks in file bad.tmpl, line 2"),
                (["good.tmpl", "missing.tmpl"], "Cannot read file missing.tmpl"),
                (["latin.tmpl"], "Cannot read file latin.tmpl"),
                (["empty.tmpl"], "No view is defined"),
                (["good.tmpl", "-s", "other"], "in file good.tmpl, line 1"),
                (["good.tmpl", "-d", "domain"], "-d"), ([], "FILE.tmpl")]:
            with self.subTest(arguments=arguments):
                (self.folder / "out.cpp").unlink(missing_ok=True)
                result = self.run_compiler("-o", "out.cpp", *arguments)
                self.assertEqual(result.returncode, 1)
                self.assertIn(message, result.stderr)
                self.assertNotIn("Traceback", result.stderr)
                self.assertEqual(self.files(), before)

    def test_stale_output_goes_and_all_errors_are_reported(self):
        (self.folder / "out.cpp").write_text("old")
        result = self.run_compiler("-o", "out.cpp", "bad.tmpl", "bad.tmpl")
        self.assertFalse((self.folder / "out.cpp").exists())
        self.assertEqual(re.findall(r"line (\d)", result.stderr), ["2", "3", "2", "3"])

    def test_unfit_outputs(self):
        for output, message in [("./good.tmpl", "is both input and output"), (".", "is not a regular file"),
                                ("no/such/out.cpp", "Cannot write file no/such/out.cpp")]:
            with self.subTest(output=output):
                result = self.run_compiler("-o", output, "good.tmpl")
                self.assertEqual(result.returncode, 1)
                self.assertIn(message, result.stderr)
                self.assertEqual((self.folder / "good.tmpl").read_bytes(), self.GOOD.encode())


if __name__ == "__main__":
    unittest.main()
