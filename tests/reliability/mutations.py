"""The single changes that mutate.py plants into a C++ source.

Works on tokens, not on a syntax tree: it relies on the formatter, which puts blanks around binary operators and none
around template brackets, pointers and signs. What does not compile afterwards is sorted out by the compiler.
"""

import re
from dataclasses import dataclass

TOKEN = re.compile(
    r"(?P<skip>\s+|//[^\n]*|/\*.*?\*/)"
    r"|(?P<directive>^[ \t]*\#(?:[^\n]*\\\n)*[^\n]*)"
    r'|(?P<text>"(?:\\.|[^"\\])*"|\'(?:\\.|[^\'\\])+\')'
    r"|(?P<number>(?:\d+\.\d*|\.\d+|\d+)(?:[eE][-+]?\d+)?[fFuUlL]*)"
    r"|(?P<name>[A-Za-z_]\w*)"
    r"|(?P<sign>->|::|\+\+|--|<<=|>>=|<=|>=|==|!=|&&|\|\||\+=|-=|\*=|/=|\|=|&=|<<|.)",
    re.S | re.M)

OPPOSITE = {"(": ")", "[": "]", "{": "}"}
CLOSING = set(OPPOSITE.values())

COMPARISONS = {"<": "<=", "<=": "<", ">": ">=", ">=": ">", "==": "!=", "!=": "==", "&&": "||", "||": "&&"}
ARITHMETIC = {"+": "-", "-": "+", "*": "/", "/": "*", "+=": "-=", "-=": "+=", "*=": "/=", "/=": "*="}
NAMES = {"true": "false", "false": "true", "min": "max", "max": "min", "Lesser": "Greater", "Greater": "Lesser",
         "Both": "FirstOnly"}
# Components of vectors, by themselves and at the end of a name.
COMPONENT = re.compile(r"^(?P<stem>|d|g|r|b|w|[A-Za-z]*S|[A-Za-z]*)(?P<axis>[xyz])(?P<end>c?)$")
NEXT_AXIS = {"x": "y", "y": "z", "z": "x"}

# Statements that nothing is to observe: they state what holds, or ask for memory ahead of time.
UNOBSERVED = {"assert", "static_assert", "__builtin_prefetch", "using", "typedef", "namespace", "template", "friend"}
KEYWORDS = {"if", "for", "while", "switch", "return", "sizeof", "case", "catch", "else", "do", "new", "delete", "throw",
            "const", "constexpr", "static", "auto", "class", "struct", "enum", "public", "private", "protected", "operator",
            "explicit", "inline", "virtual", "static_cast", "reinterpret_cast", "default", "goto"}
BOUNDARIES = {"=", ",", ";", "return", "?", ":", "<", ">", "<=", ">=", "==", "!=", "&&", "||", "+=", "-=", "*=", "/=", "<<",
              "|", "&", "|=", "%", "!"}


@dataclass(frozen=True)
class Token:
    kind: str
    text: str
    start: int
    end: int


@dataclass(frozen=True)
class Mutation:
    """Replaces source[start:end] by `after`."""
    kind: str
    start: int
    end: int
    after: str


class Source:
    """A text with its tokens and the partners of its brackets."""

    def __init__(self, text):
        self.text = text
        self.tokens = [Token(m.lastgroup, m.group(), m.start(), m.end()) for m in TOKEN.finditer(text)
                       if m.lastgroup not in ("skip", "directive")]
        self.partner = self._partners()
        self.silent = self._silent_tokens()

    def _partners(self):
        partner, open_brackets = {}, []
        for i, token in enumerate(self.tokens):
            if token.kind != "sign":
                continue
            if token.text in OPPOSITE:
                open_brackets.append(i)
            elif token.text in CLOSING and open_brackets:
                partner[i] = open_brackets.pop()
                partner[partner[i]] = i
        return partner

    def _silent_tokens(self):
        """Indices of the tokens of statements that are not observed."""
        silent = set()
        for i, token in enumerate(self.tokens):
            if token.text not in UNOBSERVED:
                continue
            end = i
            while end < len(self.tokens) and self.tokens[end].text not in (";", "{"):
                end = self.partner.get(end, end) + 1 if self.tokens[end].text == "(" else end + 1
                if token.text == "template" and self.tokens[end - 1].text == ">":
                    break
            silent.update(range(i, end))
        return silent

    def word(self, i):
        return self.tokens[i].text if 0 <= i < len(self.tokens) else ""

    def spaced(self, i):
        """Whether the token stands between blanks, as binary operators do."""
        token = self.tokens[i]
        return self.text[token.start - 1:token.start].isspace() and self.text[token.end:token.end + 1].isspace()

    def slice(self, first, last):
        """The text of the tokens first..last."""
        return self.text[self.tokens[first].start:self.tokens[last].end]

    def replace(self, kind, first, last, after):
        return Mutation(kind, self.tokens[first].start, self.tokens[last].end, after)


def signs(source):
    for i, token in enumerate(source.tokens):
        if token.kind != "sign" or i in source.silent:
            continue
        if source.spaced(i) and token.text in COMPARISONS:
            yield source.replace("comparison", i, i, COMPARISONS[token.text])
        elif source.spaced(i) and token.text in ARITHMETIC and source.word(i - 1) not in ("=", "return", ","):
            yield source.replace("arithmetic", i, i, ARITHMETIC[token.text])
        elif token.text == "-" and not source.spaced(i) and source.word(i - 1) in ("(", "{", "=", ",", "return", ":", "?"):
            yield source.replace("arithmetic", i, i, "")
        elif token.text == "!":
            yield source.replace("comparison", i, i, "")


def neighbours_of(number):
    if re.fullmatch(r"\d+", number):
        value = int(number)
        return [str(value + 1)] + ([str(value - 1)] if value > 0 else [])
    match = re.fullmatch(r"([\d.]+)(?:e([-+]?\d+))?", number)
    if match is None:
        return []
    if match.group(2):
        return [f"{match.group(1)}e{int(match.group(2)) + 1}"]
    return [repr(float(number) + 1.0)]


def constants(source):
    for i, token in enumerate(source.tokens):
        if i in source.silent:
            continue
        if token.kind == "number":
            for after in neighbours_of(token.text):
                yield source.replace("constant", i, i, after)
        elif token.kind == "name" and token.text in NAMES:
            yield source.replace("constant", i, i, NAMES[token.text])


def components(source):
    """x, y, z taken for each other, where a component is used."""
    for i, token in enumerate(source.tokens):
        if token.kind != "name" or i in source.silent or source.word(i - 1) in ("double", "int", "Value", "*", "&"):
            continue
        if source.word(i - 1) == "const" or source.word(i + 1) == "(":
            continue
        match = COMPONENT.match(token.text)
        if match and (match.group("end") or len(token.text) <= 2 or match.group("stem").endswith("S")):
            after = match.group("stem") + NEXT_AXIS[match.group("axis")] + match.group("end")
            yield source.replace("component", i, i, after)


def conditions(source):
    for i, token in enumerate(source.tokens):
        if token.text not in ("if", "while") or source.word(i + 1) != "(" or i in source.silent:
            continue
        first, last = i + 2, source.partner[i + 1] - 1
        if any(source.word(k) == "=" for k in range(first, last)):
            continue  # declares what it tests
        if source.word(first) == "!" or last - first == 2 and source.word(first + 1) in ("==", "!="):
            continue  # the signs have it
        yield source.replace("condition", first, last, f"!({source.slice(first, last)})")


def statements(source):
    """Statements left out: jumps without a value, calls, assignments."""
    for i, token in enumerate(source.tokens):
        if token.kind != "name" or i in source.silent or source.word(i - 1) not in (";", "{", "}", ")", "else", ":"):
            continue
        if token.text in ("break", "continue", "return") and source.word(i + 1) == ";":
            yield source.replace("statement", i, i, "")
            continue
        if token.text in KEYWORDS:
            continue
        end = end_of_action(source, i)
        if end is not None:
            yield source.replace("statement", i, end - 1, "")


def end_of_action(source, first):
    """The semicolon of the call or assignment that begins at a token; None if it is something else."""
    i, acts = first, False
    while i < len(source.tokens) and source.word(i) != ";":
        word = source.word(i)
        if word in CLOSING or word == "{" and not acts:
            return None
        if word in ("=", "+=", "-=", "*=", "/="):
            acts = True
        elif word == "(":
            acts = acts or source.word(source.partner.get(i, i) + 1) == ";"
        elif not acts and i > first and source.tokens[i].kind == "name" and source.word(i - 1) not in ("::", ".", "->"):
            return None  # two names in a row declare something
        elif not acts and word in ("*", "&", "<", ">", ",", "?"):
            return None
        i = source.partner.get(i, i) + 1 if word in OPPOSITE else i + 1
    return i if acts else None


def arguments_of(source, opening):
    """Arguments between brackets, as pairs of first and last token; empty if the brackets hold something else."""
    arguments, first, i = [], opening + 1, opening + 1
    closing = source.partner.get(opening, opening)
    while i <= closing:
        word = source.word(i)
        if word in (";", "for"):
            return []
        if i == closing or word == ",":
            if first > i - 1:
                return []
            arguments.append((first, i - 1))
            first = i + 1
        if word == "<" and not source.spaced(i):  # the commas of template arguments are others
            while i < closing and source.word(i) != ">":
                i += 1
        i = source.partner[i] + 1 if word in OPPOSITE and i in source.partner else i + 1
    return arguments


def declares(source, argument):
    first, last = argument
    names = [k for k in range(first, last + 1) if source.tokens[k].kind == "name"]
    return any(b - a == 1 or source.word(a + 1) in ("*", "&") and not source.spaced(a + 1) for a, b in zip(names, names[1:]))


def swapped_arguments(source):
    for i, token in enumerate(source.tokens):
        if token.text not in ("(", "{") or i in source.silent or i not in source.partner:
            continue
        if token.text == "(" and (source.tokens[i - 1].kind != "name" or source.word(i - 1) in KEYWORDS):
            continue
        arguments = arguments_of(source, i)
        if any(declares(source, argument) for argument in arguments):
            continue
        for left, right in zip(arguments, arguments[1:]):
            a, b = source.slice(*left), source.slice(*right)
            if a != b:
                between = source.text[source.tokens[left[1]].end:source.tokens[right[0]].start]
                yield source.replace("argument", left[0], right[1], b + between + a)


def chain_at(source, first_operator, operators, boundaries):
    """The operators of the chain of one precedence that an operator belongs to, and where the chain ends."""
    positions, i = [first_operator], first_operator + 1
    while i < len(source.tokens) and source.word(i) not in boundaries and source.word(i) not in CLOSING:
        if source.word(i) in operators and source.spaced(i):
            positions.append(i)
        i = source.partner[i] + 1 if source.word(i) in OPPOSITE and i in source.partner else i + 1
    return positions, i


def orders(source):
    """a + b + c as a + c + b and as a + (b + c); products alike."""
    for operators, more in (({"+", "-"}, set()), ({"*", "/"}, {"+", "-"})):
        for i in range(len(source.tokens)):
            if i in source.silent or source.word(i) not in operators or not source.spaced(i):
                continue
            positions, end = chain_at(source, i, operators, BOUNDARIES | more)
            if len(positions) < 2:
                continue
            second = positions[1]
            third = positions[2] if len(positions) > 2 else end
            b, c = source.slice(i + 1, second - 1), source.slice(second + 1, third - 1)
            here, there = source.word(i), source.word(second)
            if b != c or here != there:
                yield source.replace("order", i, third - 1, f"{there} {c} {here} {b}")
            if here in ("+", "*"):
                yield source.replace("order", i, third - 1, f"{here} ({b} {there} {c})")


RULES = (signs, constants, components, conditions, statements, swapped_arguments, orders)


def mutations_of(text):
    """All changes of a source, in the order of their places."""
    source = Source(text)
    found = {m for rule in RULES for m in rule(source) if text[m.start:m.end] != m.after}
    return sorted(found, key=lambda m: (m.start, m.end, m.after))
