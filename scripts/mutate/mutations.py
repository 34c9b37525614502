"""Finds what can be changed in a C++ source: one operator, constant, text, condition or statement at a time.

Works on tokens, so that comments, preprocessor lines and the insides of texts are left alone. It relies on the formatter's
habits: binary operators have a space on both sides, template brackets and references do not.
"""

import dataclasses
import hashlib
import re

TOKEN = re.compile(
    r"""(?P<space>\s+|//[^\n]*|/\*.*?\*/)
    |(?P<line>^[ \t]*\#(?:[^\n\\]|\\.)*)
    |(?P<raw>(?:u8|[uUL])?R"(?P<mark>[^(\s]*)\(.*?\)(?P=mark)")
    |(?P<text>@?(?:u8|[uUL])?"(?:[^"\\\n]|\\.)*")
    |(?P<char>(?:u8|[uUL])?'(?:[^'\\\n]|\\.)+')
    |(?P<number>\.?\d(?:[eEpP][+-]|'?[\w.])*)
    |(?P<word>[A-Za-z_@$][\w$]*)
    |(?P<sign><=>|<<=|>>=|\.\.\.|->\*|::|->|\+\+|--|&&|\|\||[-+*/%&|^=!<>]=|<<|[^\w\s])""",
    re.VERBOSE | re.DOTALL | re.MULTILINE)

BINARY = {
    "<": ["<=", ">"], "<=": ["<", "=="], ">": [">=", "<"], ">=": [">", "=="], "==": ["!="], "!=": ["=="],
    "&&": ["||"], "||": ["&&"], "+": ["-"], "-": ["+"], "*": ["/"], "/": ["*"], "%": ["*"],
    "&": ["|"], "|": ["&"], "^": ["&"], "<<": [">>"], "+=": ["-="], "-=": ["+="], "|=": ["&="], "&=": ["|="],
    "*=": ["+="], "/=": ["*="],
}
STEP = {"++": "--", "--": "++"}
WORDS = {
    "true": "false", "false": "true", "min": "max", "max": "min", "front": "back", "back": "front",
    "find": "rfind", "rfind": "find",
}
DECLARATION = re.compile(r"(?:[\w:]+(?:<[^;]*?>)?[&*]*\s+)+[&*]*\w+\s*(?:=(?!=)|\(|\{|;|\[)|(?:const )?auto[&*]* \[", re.DOTALL)
BLOCK_BEFORE = {")", "]", "else", "do", "try", "const", "override", "noexcept", "mutable", ":"}
TYPES = {"namespace", "class", "struct", "union", "enum", "@interface", "@implementation"}
UNTOUCHED_STATEMENTS = {"using", "static_assert", "typedef", "namespace", "friend", "public", "private", "protected"}


@dataclasses.dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclasses.dataclass(frozen=True)
class Mutation:
    """`text[start:end]` becomes `replacement`; `before` and `after` are the whole lines, with single spaces."""
    path: str
    text: str = dataclasses.field(repr=False)
    line: int
    kind: str
    start: int
    end: int
    replacement: str
    before: str
    after: str
    occurrence: int
    unit: tuple = dataclasses.field(default=None, repr=False)

    @property
    def key(self):
        parts = (self.path, self.before, self.after, str(self.occurrence))
        return hashlib.sha256("\0".join(parts).encode()).hexdigest()[:12]

    @property
    def mutated(self):
        return self.text[:self.start] + self.replacement + self.text[self.end:]


def tokens_of(text):
    found = []
    for match in TOKEN.finditer(text):
        if match.lastgroup != "space" and match.group("space") is None:
            kind = next(name for name in ("line", "raw", "text", "char", "number", "word", "sign") if match.group(name))
            if kind != "line":
                found.append(Token(kind, match.group(), match.start(), match.end()))
    return found


class Finder:
    """Goes once through the tokens of a file and collects (kind, start, end, replacement)."""

    def __init__(self, text):
        self.text = text
        self.tokens = tokens_of(text)
        self.found = []
        self.units = []  # (start, end, shape): what can be chosen between while a program runs; see schemata.py
        self.partner = {}
        self.stack = []  # (bracket, what it encloses, statement that it interrupts)
        self.statement = None
        self.blocks = 0

    def add(self, kind, start, end, replacement):
        self.found.append((kind, start, end, replacement))

    def run(self):
        self.pair_brackets()
        for index, token in enumerate(self.tokens):
            if self.statement is None:
                self.statement = index
            if token.kind == "number":
                self.number(token)
            elif token.kind == "char":
                self.char(token)
            elif token.kind in ("text", "raw"):
                self.string(index)
            elif token.kind == "word":
                self.word(index)
            elif token.text in "([{":
                self.open(index)
            elif token.text in ")]}":
                self.close(index)
            elif token.text == ";":
                self.semicolon(index)
            elif self.blocks:
                self.operator(index)
        return self.found

    def pair_brackets(self):
        waiting = []
        for index, token in enumerate(self.tokens):
            if token.kind == "sign" and token.text in "([{":
                waiting.append(index)
            elif token.kind == "sign" and token.text in ")]}" and waiting:
                self.partner[waiting.pop()] = index

    def before(self, index):
        return self.tokens[index - 1].text if index else ""

    def head(self, index):
        return self.tokens[self.statement if self.statement is not None else index:index]

    # Brackets, and what they say about where statements begin

    def open(self, index):
        bracket, kind = self.tokens[index].text, "group"
        if bracket == "{":
            kind = self.brace_kind(index)
        if bracket == "(" and self.before(index) in ("if", "while") and self.blocks:
            self.condition(index)
        if bracket == "(" and self.before(index) in ("if", "while", "for") and self.blocks:
            self.header_units(index)
        self.stack.append((bracket, kind, self.statement))
        if kind == "block":
            self.blocks += 1
        if kind != "group":
            self.statement = None

    def brace_kind(self, index):
        before = self.before(index)
        words = {token.text for token in self.head(index)}
        if before in BLOCK_BEFORE or "->" in words and self.tokens[index - 1].kind == "word" and before != "return":
            return "block"
        if words & TYPES or before.startswith('"'):
            return "type"
        if before in (";", "{", "}", ""):
            inside = self.stack[-1][1] if self.stack else "type"
            constructor = before == "}" and ":" in words and ")" in words
            return "block" if inside == "block" or constructor else "group"
        return "group"

    def close(self, index):
        if not self.stack:
            return
        _, kind, interrupted = self.stack.pop()
        if kind == "block":
            self.blocks -= 1
        if kind == "group":
            return
        following = self.tokens[index + 1].text if index + 1 < len(self.tokens) else ""
        self.statement = interrupted if following in (";", ",", ")", ".", "(", "]") else None

    def semicolon(self, index):
        if self.stack and self.stack[-1][0] != "{":
            return  # for (;;)
        if self.stack and self.stack[-1][1] == "block" and self.statement is not None:
            self.whole_statement(self.statement, index)
        self.statement = None

    # Mutations that can be selected while the program runs

    def header_units(self, index):
        """The parts of what stands in brackets behind if, while and for."""
        end = self.partner[index]
        parts, depth = [index + 1], 0
        for at in range(index + 1, end):
            depth += (self.tokens[at].text in ("(", "[", "{")) - (self.tokens[at].text in (")", "]", "}"))
            if self.tokens[at].text == ";" and depth == 0:
                parts.append(at + 1)
        if self.before(index) == "for" and len(parts) != 3:
            return
        condition = parts[1] if self.before(index) == "for" else parts[-1]
        condition_end = parts[2] - 1 if self.before(index) == "for" else end
        if condition < condition_end:
            self.expression_unit(condition, condition_end, "truth")
        if self.before(index) == "for" and parts[2] < end:
            self.units.append((self.tokens[parts[2]].start, self.tokens[end - 1].end, "effect"))

    def expression_unit(self, first, end, shape):
        """The tokens as an expression; of a declaration, what initialises it."""
        text = self.text[self.tokens[first].start:self.tokens[end - 1].end]
        if DECLARATION.match(text) or text.startswith("const auto ["):
            depth = 0
            for at in range(first, end):
                depth += (self.tokens[at].text in ("(", "[", "{")) - (self.tokens[at].text in (")", "]", "}"))
                if self.tokens[at].text == "=" and depth == 0 and at + 1 < end and self.tokens[at + 1].text != "{":
                    self.units.append((self.tokens[at + 1].start, self.tokens[end - 1].end, "value"))
                    return
            return
        self.units.append((self.tokens[first].start, self.tokens[end - 1].end, shape))

    def statement_unit(self, first, last):
        if self.tokens[first].text in ("static", "constexpr", "using", "static_assert", "typedef"):
            return
        text = self.text[self.tokens[first].start:self.tokens[last].end]
        leaves = self.tokens[first].text in ("return", "delete", "throw")
        if DECLARATION.match(text) and not leaves or text.startswith("const auto ["):
            self.expression_unit(first, last, "value")
        else:
            self.units.append((self.tokens[first].start, self.tokens[last].end, "statement"))

    # Possible changes

    def whole_statement(self, first, last):
        while self.tokens[first].text in ("case", "default"):
            first = next((at for at in range(first, last) if self.tokens[at].text == ":"), last) + 1
        if first < last:
            self.statement_unit(first, last)
        if first >= last or self.tokens[first].text in UNTOUCHED_STATEMENTS:
            return
        start, end = self.tokens[first].start, self.tokens[last].end
        statement = self.text[start:end]
        if self.tokens[first].text == "return" and last > first + 1:
            value = self.text[self.tokens[first + 1].start:self.tokens[last].start]
            if value.strip() not in ("{}", "true", "false", "nullptr", "std::nullopt", "0"):
                self.add("statement", start, end, "return {};" + "\n" * statement.count("\n"))
            return
        if ".reserve(" in statement or self.declares_what_is_used(statement, end):
            return
        self.add("statement", start, end, ";" + "\n" * statement.count("\n"))

    def declares_what_is_used(self, statement, end):
        declared = re.match(r"(?:[\w:]+(?:<.*?>)?[&*]?\s+)+[&*]?(\w+)\s*(?:=|\(|\{|;|\[)|.*?auto[&*]* \[(\w+)", statement,
                            re.DOTALL)
        if not declared or statement.startswith(("delete ", "throw ", "co_")):
            return False
        name = declared.group(1) or declared.group(2)
        return bool(re.search(rf"\b{name}\b", self.text[end:end + 2000]))

    def condition(self, index):
        start, end = self.tokens[index].end, self.tokens[self.partner[index]].start
        content = self.text[start:end]
        if self.before(index - 1) == "}" and self.before(index) == "while":
            return
        depth = 0
        for position, sign in enumerate(content):
            depth += (sign in "([{") - (sign in ")]}")
            if sign == ";" and depth == 0:
                start = self.tokens[index].end + position + 2
        if re.search(r"(?<![=!<>])= ", self.text[start:end]) or self.text[start:end].strip() in ("true", "false"):
            return
        lines = "\n" * self.text[start:end].count("\n")
        self.add("condition", start, end, "false" + lines)
        if self.before(index) == "if":
            self.add("condition", start, end, "true" + lines)

    def operator(self, index):
        token = self.tokens[index]
        spaced = self.text[token.start - 1] in " \n" and self.text[token.end:token.end + 1] in (" ", "\n")
        if spaced and token.text in BINARY:
            following = self.tokens[index + 1]
            if token.text == "|" and re.fullmatch(r"[A-Z][A-Z0-9_]{3,}", following.text):
                self.add("operator", token.start - 1, following.end, "")
                return
            for other in BINARY[token.text]:
                self.add("operator", token.start, token.end, other)
        elif token.text in STEP:
            self.add("operator", token.start, token.end, STEP[token.text])
        elif token.text == "!":
            self.add("operator", token.start, token.end, "")
        elif token.text == "?" and spaced:
            self.add("condition", token.start, token.end, "|| true ?")
            self.add("condition", token.start, token.end, "&& false ?")

    def word(self, index):
        token = self.tokens[index]
        other = WORDS.get(token.text)
        is_call = self.text[token.end:token.end + 1] == "(" and self.before(index) in (".", "::", "->")
        if other and (token.text in ("true", "false") or is_call and not self.only_asks_whether(index)):
            self.add("constant", token.start, token.end, other)

    def only_asks_whether(self, index):
        """Whether a search's result is only compared with npos: then its direction makes no difference."""
        end = self.partner.get(index + 1)
        if self.tokens[index].text not in ("find", "rfind") or end is None:
            return False
        after = [token.text for token in self.tokens[end + 1:end + 7]]
        return after[:1] in (["=="], ["!="]) and "npos" in after[1:] and \
            all(text in ("std", "::", "string", "string_view", "npos") for text in after[1:after.index("npos")])

    def number(self, token):
        whole = re.fullmatch(r"(0[xX][\da-fA-F']+|0[bB][01']+|\d[\d']*)([uUlLzZ]*)", token.text)
        if not whole:
            return
        digits = whole.group(1).replace("'", "")
        octal = len(digits) > 1 and digits.isdigit() and digits[0] == "0"
        value = int(digits, 8) if octal else int(digits, 0)
        style = "0{:o}" if octal else "0x{:x}" if digits[:2] in ("0x", "0X") else "{}"
        for other in {value + 1, max(value - 1, 0)} - {value}:
            self.add("constant", token.start, token.end, style.format(other) + whole.group(2))

    def char(self, token):
        value = token.text[token.text.index("'") + 1:-1]
        other = {"\\0": "\\1", "a": "b"}.get(value, "a")
        self.add("constant", token.end - len(value) - 1, token.end - 1, other)

    def string(self, index):
        token = self.tokens[index]
        words = {other.text for other in self.head(index)}
        if "static_assert" in words or self.before(index) == "extern" or "[[" in self.text[token.start - 14:token.start]:
            return
        end = token.end - 1
        if token.kind == "raw":
            end = token.start + token.text.rindex(")")
        self.add("text", end, end, "~")


def squeeze(text):
    return " ".join(text.split())


def mutations_of(path, text):
    """All mutations of the file, in the order of the text."""
    result, seen = [], {}
    finder = Finder(text)
    for kind, start, end, replacement in sorted(set(finder.run()), key=lambda found: (found[1], found[2], found[3])):
        around = [unit for unit in finder.units if unit[0] <= start and end <= unit[1]]
        unit = min(around, key=lambda unit: unit[1] - unit[0], default=None)
        first = text.rfind("\n", 0, start) + 1
        last = text.find("\n", end)
        last = len(text) if last < 0 else last
        before = squeeze(text[first:last])
        after = squeeze(text[first:start] + replacement + text[end:last])
        occurrence = seen[(before, after)] = seen.get((before, after), 0) + 1
        line = text.count("\n", 0, start) + 1
        result.append(Mutation(path, text, line, kind, start, end, replacement, before, after, occurrence, unit))
    return result
