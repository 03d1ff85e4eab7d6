#!/usr/bin/env python3
"""Compiles page templates (.tmpl) to one C++ source file.

    tmpl_cc.py -s SKIN -o OUT.cpp A.tmpl B.tmpl ...

A file is read line by line: `<% ... %>` within one line is a directive, everything else is page text and is
kept byte for byte. Each view becomes a struct, each template a virtual function of it, and the end of the
output registers the views with the views pool in the order of the inputs. Where the language would take
something silently and then do something surprising, this compiler reports an error.
"""

import argparse
import os
import re
import sys
from dataclasses import dataclass
from pathlib import Path
from typing import Callable, Iterator, NamedTuple

# --- Vocabulary ------------------------------------------------------------------------------------------

IDENT = r"[A-Za-z][A-Za-z0-9_]*"
STRING = r'"(?:[^"\\]|\\.)*"'
NUMBER = r"-?[0-9]+(?:\.[0-9]+)?"
LITERAL = rf"(?:-?[0-9]+|{STRING})"
PART = rf"{IDENT}(?:\((?:{LITERAL}(?:,{LITERAL})*)?\))?"
VARIABLE = rf"\*?{PART}(?:(?:\.|->){PART})*"

LINE = re.compile(r"[^\n]*\n|[^\n]+")
DIRECTIVE = re.compile(rf'<%((?:[^"%<]|<(?!%)|%(?![>%"])|{STRING})*)%>')
CONTROL_CHARACTER = re.compile(r"[\x00-\x08\x0b-\x1f]")
QUOTED = re.compile(rf"{STRING}|'(?:[^'\\]|\\.)'")

NOTHING = re.compile("")
VIEW = re.compile(rf"({IDENT})\s+uses\s+((?:::)?{IDENT}(?:::{IDENT})*)"
                  rf"(?:\s+extends\s+({IDENT}(?:::{IDENT})?))?")
TEMPLATE = re.compile(rf"({IDENT})\((.*)\)")
PARAMETER = re.compile(rf"((?!const\b){IDENT}(?:::{IDENT})*(?: const)?(?: | &))({IDENT})")
INCLUDE = re.compile(rf"((?:{IDENT}::)?{IDENT})\((.*)\)")
CONDITION = re.compile(rf"(not\s+)?(empty\s+)?({VARIABLE})")
FOREACH = re.compile(rf"({IDENT})(?:\s+rowid\s+({IDENT})(?:\s+from\s+(0|[1-9][0-9]*))?)?"
                     rf"(\s+reverse)?\s+in\s+({VARIABLE})")
URL = re.compile(rf"({STRING})(?:\s+using\s+(.+))?")
TEXTS = rf"{STRING}(?:\s*,\s*{STRING})"
TEXT = re.compile(rf"({TEXTS}?)(?:\s+using\s+(.+))?")
COUNTED_TEXT = re.compile(rf"({TEXTS}{{1,2}}\s*,)\s*({VARIABLE})(?:\s+using\s+(.+))?")
FORM = re.compile(rf"(input|begin|end)\s+({VARIABLE})")

# Names that the generated code needs for itself, and words that betray a type of two words without a name.
RESERVED_NAMES = {"content", "out", "const", "unsigned", "signed", "short", "long", "int", "char", "double"}
# As a whole condition these are operators, not variables.
CONDITION_WORDS = {"not", "empty", "rtl"}
UNSUPPORTED = {"c++src", "cache", "csrf", "domain", "filter", "html", "pgt", "render", "trigger", "using",
               "xhtml"}
URL_PARAMETERS_MAX = 6


class TemplateError(Exception):
    """What is wrong with a directive; the compiler adds where."""


# --- Lexer -----------------------------------------------------------------------------------------------

class Token(NamedTuple):
    kind: str  # "text", "directive" or "error"
    text: str  # page text, the inside of a directive, or a message
    line: int


def tokenize(source: str) -> Iterator[Token]:
    """Cuts a file into directives and the text between them, which may span lines."""
    text, text_line = "", 1
    for number, line in enumerate(LINE.findall(source), 1):
        position = 0
        if CONTROL_CHARACTER.search(line):
            yield Token("error", "Control characters are not allowed", number)
        while (start := line.find("<%", position)) >= 0:
            match = DIRECTIVE.match(line, start)
            if not match:
                yield Token("error", "A directive must end on its line, with paired double quotes and "
                                     "without '<%', '%%' or '%\"' inside", number)
                position = start + len("<%")
                continue
            text += line[position:start]
            if text:
                yield Token("text", text, text_line)
            yield Token("directive", match[1], number)
            position = match.end()
            text, text_line = "", number
        text += line[position:]
    if text:
        yield Token("text", text, text_line)


# --- Expressions -----------------------------------------------------------------------------------------

class Scope:
    """The names that stand for themselves in expressions; all others are members of the view's record."""

    def __init__(self) -> None:
        self._usable: dict[str, bool] = {}

    def declare(self, name: str, usable: bool = True) -> None:
        """A loop's names are declared with the loop but usable only inside its item."""
        self._usable[name] = usable

    def forget(self, name: str) -> None:
        self._usable.pop(name, None)

    def clear(self) -> None:
        self._usable.clear()

    def __contains__(self, name: str) -> bool:
        return name in self._usable

    def resolve(self, variable: str) -> str:
        """The C++ text of a variable."""
        star, name = ("*", variable[1:]) if variable.startswith("*") else ("", variable)
        first = re.match(PART, name)[0]
        if first not in self._usable:
            return f"{star}content.{name}"
        if not self._usable[first]:
            raise TemplateError(f"'{first}' exists only inside the item of its foreach")
        return star + name


class Scanner:
    """Reads comma-separated lists of expressions."""

    def __init__(self, text: str, scope: Scope) -> None:
        self._text, self._scope, self._position = text, scope, 0

    def _take(self, pattern: str) -> str | None:
        match = re.compile(pattern).match(self._text, self._position)
        if not match:
            return None
        self._position = match.end()
        return match[0]

    def _list(self, element: Callable[[], str]) -> list[str]:
        elements = [element()]
        while self._take(r"\s*,\s*"):
            elements.append(element())
        return elements

    def _variable(self) -> str:
        if variable := self._take(VARIABLE):
            return self._scope.resolve(variable)
        raise TemplateError("No variable")

    def _argument(self) -> str:
        return self._take(STRING) or self._take(NUMBER) or self._variable()

    def _filtered(self, default_filter: str) -> str:
        variable = value = self._variable()
        while self._take(r"\s*\|\s*"):
            target = "content." if self._take(r"ext\s+") else "cppcms::filters::"
            name = self._take(IDENT)
            if not name:
                raise TemplateError("A filter's name must follow '|'")
            arguments = [value]
            if self._take(r"\("):
                arguments += self._list(self._argument)
                if not self._take(r"\)"):
                    raise TemplateError(f"Invalid parameters of filter {name}")
            value = f"{target}{name}({','.join(arguments)})"
        return value if value != variable else f"cppcms::filters::{default_filter}({variable})"

    def _whole(self, result: list[str]) -> list[str]:
        if self._position != len(self._text):
            raise TemplateError(f"Invalid parameters: '{self._text}'")
        return result

    def arguments(self) -> list[str]:
        """All the text as VAR, "string" or number, any of them."""
        return self._whole(self._list(self._argument)) if self._text else []

    def filtered_list(self, default_filter: str) -> list[str]:
        """All the text as VAR | filter ...; any filter takes the default one's place."""
        return self._whole(self._list(lambda: self._filtered(default_filter)))

    def filtered(self, default_filter: str) -> str:
        """All the text as one VAR | filter ..."""
        return self._whole([self._filtered(default_filter)])[0]


def parenthesised(code: str) -> bool:
    """Whether `code` is something in parentheses, the first of which is closed by the last character."""
    bare = QUOTED.sub('""', code)
    depth = 0
    for index, character in enumerate(bare):
        depth += (character == "(") - (character == ")")
        if depth == 0:
            return index == len(bare) - 1 and bare[1:-1].strip() != ""
    return False


def string_literal(text: str) -> str:
    """A C++ string literal that stands for `text`."""
    escapes = {"\\": "\\\\", '"': '\\"', "\n": "\\n", "\t": "\\t"}
    return '"' + "".join(escapes.get(character, character) for character in text) + '"'


# --- Compiler --------------------------------------------------------------------------------------------

@dataclass
class Block:
    """A block that is open; its kind is the word that a typed `end` must name."""
    kind: str
    line: int


@dataclass
class Loop(Block):
    """A foreach. Text and statements before `item` come once, before the C++ loop is entered."""
    sequence: str = ""
    item: str = ""
    rowid: str = ""
    reverse: bool = False
    stage: str = "before"  # then "separator", "item" and "after"

    def begin(self) -> str:
        return f"booster::{'r' if self.reverse else ''}begin({self.sequence})"

    def end(self) -> str:
        return f"booster::{'r' if self.reverse else ''}end({self.sequence})"

    def names(self) -> list[str]:
        return [name for name in (self.item, self.rowid) if name]


class View(NamedTuple):
    skin: str
    name: str
    record: str
    file: str
    line: int


class Compiler:
    """Collects C++ and errors over all inputs: add_source() for each of them in order, then finish()."""

    def __init__(self, skin: str | None = None) -> None:
        self.errors: list[str] = []
        self._skin = skin
        self._views: list[View] = []
        self._code = ["// Generated from templates; do not edit."]
        self._file, self._line = "", 0
        self._blocks: list[Block] = []
        self._scope = Scope()
        self._directives: dict[str, Callable[[str], None]] = {
            "skin": self._open_skin, "view": self._open_view, "template": self._open_template,
            "c++": self._cpp, "end": self._end,
            "include": self._include, "url": self._url, "form": self._form, "gt": self._gt, "ngt": self._ngt,
            "if": self._if, "elif": self._elif, "else": self._else,
            "foreach": self._foreach, "separator": self._separator, "item": self._item, "empty": self._empty,
        }

    def add_source(self, name: str, source: str) -> None:
        """Compiles one file; `name` is what messages and #line directives call it."""
        self._file, self._line = name, 1
        for token in tokenize(source):
            self._line = token.line
            try:
                if token.kind == "text":
                    self._text(token.text)
                elif token.kind == "directive":
                    self._directive(token.text)
                else:
                    raise TemplateError(token.text)
            except TemplateError as error:
                self._report(str(error))
        for block in self._blocks:
            self._line = block.line
            self._report(f"Unexpected end of file {name}: {block.kind} is not closed")
        self._blocks.clear()
        self._scope.clear()

    def finish(self) -> str:
        """The whole C++ source; meaningful when there were no errors."""
        if not self._views and not self.errors:
            self.errors.append("Error: No view is defined")
        return "\n".join(self._code + self._loader()) + "\n"

    def _report(self, message: str) -> None:
        self.errors.append(f"Error: {message} in file {self._file}, line {self._line}")

    # Output.

    def _emit(self, code: str) -> None:
        """Writes C++ that the C++ compiler will attribute to the current line of the template."""
        self._write(code, len(self._blocks))

    def _emit_head(self, code: str) -> None:
        """Writes the head of the innermost block, at the level of what surrounds the block."""
        self._write(code, len(self._blocks) - 1)

    def _write(self, code: str, depth: int) -> None:
        self._code += [f"#line {self._line} {string_literal(self._file)}", "    " * depth + code]

    def _loader(self) -> list[str]:
        """Registers the views while the program or shared object that holds them is loaded."""
        code = ["namespace {",
                "    cppcms::views::generator skin_generator;",
                "    struct skin_loader {",
                "        skin_loader() {",
                f'            skin_generator.name("{self._skin}");']
        for view in self._views:
            code += [f"#line {view.line} {string_literal(view.file)}",
                     f"            skin_generator.add_view<{view.skin}::{view.name},{view.record}>"
                     f'("{view.name}",true);']
        code += ["            cppcms::views::pool::instance().add(skin_generator);",
                 "        }",
                 "        ~skin_loader() { cppcms::views::pool::instance().remove(skin_generator); }",
                 "    } skin_loader_instance;",
                 "}"]
        return code

    # Blocks.

    def _open(self, kind: str, parent: str) -> None:
        """Opens a block even in the wrong place, so that its end is not one more error."""
        top = self._top()
        self._blocks.append(Block(kind, self._line))
        if (top.kind if top else "") != parent:
            place = f"directly inside a {parent}" if parent else "outside all other blocks"
            raise TemplateError(f"A {kind} must stand {place}")

    def _top(self) -> Block | None:
        return self._blocks[-1] if self._blocks else None

    def _in_template(self) -> bool:
        return any(block.kind == "template" for block in self._blocks)

    def _require_template(self, word: str) -> None:
        if not self._in_template():
            raise TemplateError(f"'{word}' is allowed inside a template only")

    def _new_name(self, name: str) -> str:
        if name in RESERVED_NAMES:
            raise TemplateError(f"'{name}' cannot be used as a name")
        if name in self._scope:
            raise TemplateError(f"Nested sequences or parameters with same name {name}")
        return name

    # Text and directives.

    def _text(self, text: str) -> None:
        if not self._in_template():
            content = text.lstrip(" \t\n")
            if content:
                self._line += text[:len(text) - len(content)].count("\n")
                raise TemplateError("Content is not allowed outside template blocks")
            return
        literals = "\n".join(string_literal(line) for line in LINE.findall(text))
        self._emit(f"out()<<{literals};")

    def _directive(self, inside: str) -> None:
        if inside.startswith("="):
            self._require_template("=")
            self._emit(f"out()<<{Scanner(inside[1:].strip(), self._scope).filtered('escape')};")
            return
        words = inside.strip()
        word, arguments = (words.split(None, 1) + ["", ""])[:2]
        if word in self._directives:
            self._directives[word](arguments)
        elif word in UNSUPPORTED:
            raise TemplateError(f"Unsupported command: {words}")
        else:
            raise TemplateError(f"Unknown command: {words}")

    def _match(self, pattern: re.Pattern[str], word: str, arguments: str) -> re.Match[str]:
        if match := pattern.fullmatch(arguments):
            return match
        raise TemplateError(f"Syntax error: {word} {arguments}".rstrip())

    def _cpp(self, code: str) -> None:
        if not code or code.endswith("\\"):
            raise TemplateError("Syntax error: c++ needs one whole line of code")
        self._emit(code)

    def _open_skin(self, name: str) -> None:
        self._open("skin", parent="")
        if name and not re.fullmatch(IDENT, name):
            raise TemplateError(f"Syntax error: skin {name}")
        if not name and not self._skin:
            raise TemplateError("The skin needs a name, here or by the option -s")
        if name and self._skin and name != self._skin:
            raise TemplateError(f"There can be one skin only, but two are named: {self._skin}, {name}")
        self._skin = self._skin or name
        self._emit_head(f"namespace {self._skin} {{")

    def _open_view(self, arguments: str) -> None:
        self._open("view", parent="skin")
        name, record, base = self._match(VIEW, "view", arguments).groups()
        if any(view.name == name for view in self._views):
            raise TemplateError(f"View {name} is defined twice")
        self._views.append(View(self._skin or "", name, record, self._file, self._line))
        base = base or "cppcms::base_view"
        base_arguments = "_s" if base == "cppcms::base_view" else "_s,_content"
        self._emit_head(f"struct {name} : public {base} {{")
        self._emit(f"{record} &content;")
        self._emit(f"{name}(std::ostream &_s,{record} &_content) : "
                   f"{base}({base_arguments}),content(_content),_domain_id(0) "
                   "{ _domain_id=booster::locale::ios_info::get(_s).domain_id(); }")

    def _open_template(self, arguments: str) -> None:
        self._open("template", parent="view")
        name, parameters = self._match(TEMPLATE, "template", arguments).groups()
        if name in RESERVED_NAMES or (self._views and name == self._views[-1].name):
            raise TemplateError(f"'{name}' cannot be the name of a template here")
        self._emit_head(f"virtual void {name}({self._parameters(parameters)}) {{")
        self._emit("cppcms::translation_domain_scope _trs(out(),_domain_id);")

    def _parameters(self, text: str) -> str:
        """Declares a template's parameters and gives their C++ text."""
        parameters = []
        for parameter in re.split(r",[ \t]*", text) if text else []:
            match = PARAMETER.fullmatch(parameter)
            if not match:
                raise TemplateError(f"Wrong expression '{parameter}', a parameter is TYPE [const] [&]NAME")
            self._scope.declare(self._new_name(match[2]))
            parameters.append(parameter)
        return ",".join(parameters)

    def _end(self, kind: str) -> None:
        block = self._top()
        if not block:
            raise TemplateError("Unexpected 'end': no block is open")
        if kind and kind != block.kind:
            self._recover(kind)
            raise TemplateError(f"End of {kind} does not match block {block.kind}")
        if block.kind == "separator":
            raise TemplateError("A separator ends with its item only")
        self._leave(self._blocks.pop())
        if isinstance(block, Loop) and block.stage != "after":
            raise TemplateError("foreach without item")
        if isinstance(block, Loop):
            self._emit("}}")
        elif block.kind == "view":
            self._emit("private: int _domain_id; };")
        else:
            self._emit("}")

    def _recover(self, kind: str) -> None:
        """After a wrong end: closes what its author meant, so that one mistake is one message."""
        meant = max((index for index, block in enumerate(self._blocks) if block.kind == kind),
                    default=len(self._blocks) - 1)
        while len(self._blocks) > meant:
            self._leave(self._blocks.pop())

    def _leave(self, block: Block) -> None:
        """Ends the life of the names that a closed block has brought."""
        if block.kind == "template":
            self._scope.clear()
        elif isinstance(block, Loop):
            for name in block.names():
                self._scope.forget(name)
        elif block.kind == "item" and isinstance(loop := self._top(), Loop):
            loop.stage = "after"
            for name in loop.names():
                self._scope.declare(name, usable=False)

    # Statements.

    def _include(self, arguments: str) -> None:
        self._require_template("include")
        name, parameters = self._match(INCLUDE, "include", arguments).groups()
        self._emit(f"{name}({','.join(Scanner(parameters, self._scope).arguments())});")

    def _condition(self, word: str, text: str) -> str:
        if text.startswith("("):
            if parenthesised(text):
                return text
            raise TemplateError(f"Syntax error: {word} {text}")
        negated, empty, variable = self._match(CONDITION, word, text).groups()
        if text == "rtl":
            # A catalogue says so of a language that is written from right to left.
            return '(cppcms::locale::translate("LTR").str(out().getloc()) == "RTL")'
        if variable in CONDITION_WORDS or (empty and variable.startswith("*")):
            raise TemplateError(f"Syntax error: {word} {text}")
        condition = self._scope.resolve(variable) + (".empty()" if empty else "")
        return f"(!({condition}))" if negated else f"({condition})"

    def _if(self, arguments: str) -> None:
        self._require_template("if")
        self._blocks.append(Block("if", self._line))
        self._emit_head(f"if{self._condition('if', arguments)} {{")

    def _branch(self, word: str) -> Block:
        """The open block, which is an if or elif, on its way to become the next branch."""
        block = self._top()
        if not block or block.kind not in ("if", "elif"):
            raise TemplateError(f"{word} without if")
        block.kind = word
        return block

    def _elif(self, arguments: str) -> None:
        self._branch("elif")
        self._emit_head(f"}} else if{self._condition('elif', arguments)} {{")

    def _else(self, arguments: str) -> None:
        self._branch("else")
        self._match(NOTHING, "else", arguments)
        self._emit_head("} else {")

    def _foreach(self, arguments: str) -> None:
        self._require_template("foreach")
        loop = Loop("foreach", self._line)
        self._blocks.append(loop)
        item, rowid, first, reverse, sequence = self._match(FOREACH, "foreach", arguments).groups()
        loop.sequence, loop.reverse = self._scope.resolve(sequence), bool(reverse)
        loop.item = self._new_name(item)
        self._scope.declare(item, usable=False)
        if rowid:
            loop.rowid = self._new_name(rowid)
            self._scope.declare(rowid, usable=False)
        row = f" int {rowid} = {first or 0};" if rowid else ""
        self._emit_head(f"{{ if({loop.begin()}!={loop.end()}) {{{row}")

    def _enter_loop(self, word: str) -> Loop:
        """The open foreach, before its item; writes the head of the C++ loop once."""
        loop = self._top()
        if not isinstance(loop, Loop) or loop.stage != "before":
            raise TemplateError(f"Unexpected {word}: it must stand once in a foreach, separator before item")
        pointer, end = f"{loop.item}_ptr", f"{loop.item}_ptr_end"
        step = f"++{pointer}" + (f",++{loop.rowid}" if loop.rowid else "")
        self._emit(f"for(auto {pointer}={loop.begin()},{end}={loop.end()};{pointer}!={end};{step}) {{ "
                   f"auto &{loop.item}=*{pointer};")
        return loop

    def _separator(self, arguments: str) -> None:
        self._match(NOTHING, "separator", arguments)
        loop = self._enter_loop("separator")
        loop.stage = "separator"
        self._blocks.append(Block("separator", self._line))
        self._emit_head(f"if({loop.item}_ptr!={loop.begin()}) {{")

    def _item(self, arguments: str) -> None:
        self._match(NOTHING, "item", arguments)
        block = self._top()
        if block and block.kind == "separator":
            self._blocks.pop()
            self._emit("}")
            loop = self._top()
        else:
            loop = self._enter_loop("item")
        loop.stage = "item"
        for name in loop.names():
            self._scope.declare(name)
        self._blocks.append(Block("item", self._line))

    def _empty(self, arguments: str) -> None:
        self._match(NOTHING, "empty", arguments)
        loop = self._top()
        if not isinstance(loop, Loop) or loop.kind == "empty" or loop.stage != "after":
            raise TemplateError("Unexpected empty: it must stand once in a foreach, after the item's end")
        loop.kind = "empty"
        self._emit_head("} else {")

    def _url(self, arguments: str) -> None:
        self._require_template("url")
        key, using = self._match(URL, "url", arguments).groups()
        parameters = Scanner(using, self._scope).filtered_list("urlencode") if using else []
        if len(parameters) > URL_PARAMETERS_MAX:
            raise TemplateError(f"A url takes at most {URL_PARAMETERS_MAX} parameters")
        self._emit(f"content.app().mapper().map({', '.join(['out()', key, *parameters])});")

    def _gt(self, arguments: str) -> None:
        self._require_template("gt")
        texts, using = self._match(TEXT, "gt", arguments).groups()
        self._translate(texts, using)

    def _ngt(self, arguments: str) -> None:
        self._require_template("ngt")
        texts, number, using = self._match(COUNTED_TEXT, "ngt", arguments).groups()
        self._translate(texts + self._scope.resolve(number), using)

    def _translate(self, texts: str, using: str | None) -> None:
        """Writes what a catalogue has for a text, as it is, with escaped values for its {1}, {2} ..."""
        message = f"cppcms::locale::translate({texts})"
        values = Scanner(using, self._scope).filtered_list("escape") if using else []
        if values:
            message = f"cppcms::locale::format({message})" + "".join(f" % ({value})" for value in values)
        self._emit(f"out()<<{message};")

    def _form(self, arguments: str) -> None:
        self._require_template("form")
        part, variable = self._match(FORM, "form", arguments).groups()
        widget = self._scope.resolve(variable)
        widget = f"({widget})" if widget.startswith("*") else widget

        def render(half: str) -> str:
            return (f"_form_context.widget_part(cppcms::form_context::{half}_part); "
                    f"{widget}.render_input(_form_context);")

        code = {"begin": render("first"), "end": render("second"),
                "input": f"{render('first')} out()<<{widget}.attributes_string(); {render('second')}"}[part]
        self._emit(f"{{ cppcms::form_context _form_context(out(),cppcms::form_flags::as_html); {code} }}")


# --- Command line ----------------------------------------------------------------------------------------

class ArgumentParser(argparse.ArgumentParser):
    def error(self, message: str) -> None:
        self.exit(1, f"Error: {message}\n")


def unfit_output(path: Path, inputs: list[str]) -> str | None:
    """Why a file must not be replaced or removed, if it must not."""
    if any(Path(name).resolve() == path.resolve() for name in inputs):
        return f"{path} is both input and output"
    if path.exists() and not path.is_file():
        return f"{path} is not a regular file"
    return None


def write_output(path: Path, code: str) -> None:
    """Replaces the file at once: a broken run leaves no half of it."""
    temporary = path.with_name(path.name + ".tmp")
    try:
        temporary.write_text(code, encoding="utf-8", newline="\n")
        os.replace(temporary, path)
    except (OSError, UnicodeError):
        temporary.unlink(missing_ok=True)
        raise


def parse_arguments(arguments: list[str]) -> argparse.Namespace:
    parser = ArgumentParser(description="Compiles page templates to C++.", allow_abbrev=False)
    parser.add_argument("-o", "--code", metavar="OUT.cpp", type=Path,
                        help="output file, replaced only on success; without it the standard output")
    parser.add_argument("-s", "-n", "--skin", metavar="SKIN", help="skin that the views belong to")
    parser.add_argument("inputs", metavar="FILE.tmpl", nargs="+", help="templates, base views first")
    return parser.parse_intermixed_args(arguments)


def main(arguments: list[str]) -> int:
    options = parse_arguments(arguments)
    if options.code and (complaint := unfit_output(options.code, options.inputs)):
        print(f"Error: {complaint}", file=sys.stderr)
        return 1
    compiler = Compiler(options.skin)
    if options.skin and not re.fullmatch(IDENT, options.skin):
        compiler.errors.append(f"Error: '{options.skin}' cannot be the name of a skin")
    for name in options.inputs:
        try:
            with open(name, encoding="utf-8") as source:
                compiler.add_source(name, source.read())
        except (OSError, UnicodeDecodeError) as error:
            compiler.errors.append(f"Error: Cannot read file {name}: {error}")
    code = compiler.finish()
    if compiler.errors:
        print("\n".join(compiler.errors), file=sys.stderr)
        if options.code and options.code.exists():
            # A stale output would pass for an up-to-date one.
            options.code.unlink()
        return 1
    if not options.code:
        sys.stdout.buffer.write(code.encode())
        return 0
    try:
        write_output(options.code, code)
    except (OSError, UnicodeError) as error:
        print(f"Error: Cannot write file {options.code}: {error}", file=sys.stderr)
        return 1
    return 0


if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
