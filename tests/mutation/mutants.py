"""Finds what can be changed in a C++ source: one operator, constant, condition or statement each.

Knows comments, texts, preprocessor lines and static_assert, which are left alone. Relies on the
project's format: a blank stands on both sides of a binary operator, and on one side at most of
other uses of the same characters.
"""

import re
from dataclasses import dataclass

MASKED = re.compile(
    r'//[^\n]*|/\*.*?\*/|^[ \t]*#(?:[^\n\\]|\\.)*|R"(\w*)\(.*?\)\1"|"(?:[^"\\\n]|\\.)*"'
    r"|(?<![0-9A-Fa-fx])'(?:[^'\\\n]|\\.)+'",
    re.S | re.M)
BINARY = {
    '<': ('<=', '>='), '<=': ('<', '>'), '>': ('>=', '<='), '>=': ('>', '<'),
    '==': ('!=',), '!=': ('==',), '&&': ('||',), '||': ('&&',),
    '+': ('-',), '-': ('+',), '*': ('/',), '/': ('*',), '%': ('*',),
    '&': ('|',), '|': ('&',), '^': ('&',), '<<': ('>>',), '>>': ('<<',),
    '+=': ('-=',), '-=': ('+=',), '*=': ('/=',), '/=': ('*=',), '|=': ('&=',), '&=': ('|=',),
}
BINARY_PATTERN = re.compile(
    r'(?<=\s)(' + '|'.join(re.escape(o) for o in sorted(BINARY, key=len, reverse=True)) +
    r')(?=\s)')
NUMBER = re.compile(r"(?<![\w.'])(0[xX][0-9a-fA-F]+|\d+(?:\.\d+)?)([uUlLfF]*)(?![\w.'])")
WORD = {'true': 'false', 'false': 'true', 'continue': 'break', 'break': 'continue'}
WORD_PATTERN = re.compile(r'\b(' + '|'.join(WORD) + r')\b')
CONDITION = re.compile(r'\b(?:if|while) \(')
# What may stand where a statement begins: a chain of names, then a call or an assignment.
STATEMENT = re.compile(r'\*?[A-Za-z_][\w.:]*(?:(?:->|::|\.)\w+|\[[^\]\n]*\]|\(\))*'
                       r'(?:\(|(?:<[^<>;\n]*>)\(| [-+*/|&]?= )')
NO_CALLS = re.compile(r'(?:return|if|for|while|switch|static_assert|sizeof|using|delete|throw|else|'
                      r'case|default|do|namespace|noexcept|alignas|decltype)\b')


@dataclass(frozen=True)
class Mutant:
    """One change: what stands at `start` up to `end` becomes `text`."""
    path: str
    start: int
    end: int
    text: str
    line: int
    before: str  # the lines that are touched, in one
    after: str

    @property
    def key(self):
        return self.path, self.before, self.after


def mask(source):
    """The source with blanks for all that is no code; every place stays where it is."""
    def blank(match):
        text = match.group(0)
        # A text is an operand, so a character stands for it.
        filler = 'Q' if text[0] in '"\'R' else ' '
        return ''.join('\n' if c == '\n' else filler for c in text)
    masked = list(MASKED.sub(blank, source))
    code = ''.join(masked)
    for match in re.finditer(r'\bstatic_assert\(', code):
        end = closing(code, match.end() - 1)
        masked[match.start():end] = [c if c == '\n' else ' ' for c in masked[match.start():end]]
    return ''.join(masked)


def closing(code, opening):
    """The place behind the bracket that closes the one at `opening`."""
    depth = 0
    for i in range(opening, len(code)):
        if code[i] in '([{':
            depth += 1
        elif code[i] in ')]}':
            depth -= 1
            if depth == 0:
                return i + 1
    return len(code)


def binary(code):
    for match in BINARY_PATTERN.finditer(code):
        for other in BINARY[match.group(1)]:
            yield match.start(), match.end(), other


def unary(code):
    for match in re.finditer(r'!(?=[\w(*])', code):
        yield match.start(), match.end(), ''
    for match in re.finditer(r'\+\+|--', code):
        yield match.start(), match.end(), '--' if match.group(0) == '++' else '++'


def constants(code):
    for match in NUMBER.finditer(code):
        digits, suffix = match.groups()
        if digits[:2] in ('0x', '0X'):
            others = [f'0x{int(digits, 16) + 1:X}']
        elif '.' in digits:
            whole, fraction = digits.split('.')
            others = [f'{int(whole) + 1}.{fraction}']
        elif digits == '1':
            others = ['0', '2']
        else:
            others = [str(int(digits) + 1)]
        for other in others:
            yield match.start(), match.end(), other + suffix


def words(code):
    for match in WORD_PATTERN.finditer(code):
        yield match.start(), match.end(), WORD[match.group(1)]


def conditions(code):
    for match in CONDITION.finditer(code):
        end = closing(code, match.end() - 1) - 1
        start = match.end()
        first = code.find(';', start, end)  # a condition behind a declaration
        if first >= 0:
            start = first + 1
        elif re.search(r'\w[*&]? \w+ = ', code[start:end]):
            continue
        yield start, end, ('(' if start == match.end() else ' (') .replace('(', '!(') + \
            code_of(start, end) + ')'


def code_of(start, end):
    """Stands for the source's own text of that stretch, which `mutants` puts in."""
    return f'\0{start}:{end}\0'


def statements(code):
    for match in STATEMENT.finditer(code):
        start = match.start()
        if NO_CALLS.match(code, start):
            continue
        before = code[:start].rstrip()
        if not before or before[-1] not in ';{})' or code[start - 1] not in ' \n':
            continue
        if before[-1] == ')' and not is_behind_condition(code, len(before) - 1):
            continue
        end = end_of_statement(code, start)
        if end is not None:
            yield start, end, ''


def rows(code):
    """Rows of tables, a line each; some lines hold more than one."""
    for match in re.finditer(r'^ +((?:\w*\{|\w+\().*[)}]),$', code, re.M):
        opening = re.search(r'[({]', match.group(1)).start() + match.start(1)
        if closing(code, opening) == match.end(1) or match.group(1).count('}, ') > 0:
            yield match.start(1), match.end(1) + 1, ''


def is_behind_condition(code, bracket):
    depth = 0
    for i in range(bracket, -1, -1):
        if code[i] == ')':
            depth += 1
        elif code[i] == '(':
            depth -= 1
            if depth == 0:
                return re.search(r'\b(?:if|for|while) $', code[max(0, i - 8):i]) is not None
    return False


def end_of_statement(code, start):
    i = start
    while i < len(code):
        if code[i] in '([{':
            i = closing(code, i)
            continue
        if code[i] == ';':
            return i
        if code[i] in ')]}':
            return None
        i += 1
    return None


def one_line(text):
    return ' '.join(text.split())


def mutants(path, source):
    """All mutants of a source, in its order."""
    code = mask(source)
    found = []
    for kind in (binary, unary, constants, words, conditions, statements,
                 rows):
        for start, end, text in kind(code):
            text = re.sub(r'\0(\d+):(\d+)\0',
                          lambda m: source[int(m.group(1)):int(m.group(2))], text)
            first = source.rfind('\n', 0, start) + 1
            last = source.find('\n', end)
            last = len(source) if last < 0 else last
            found.append(Mutant(path, start, end, text, source.count('\n', 0, start) + 1,
                                one_line(source[first:last]),
                                one_line(source[first:start] + text + source[end:last])))
    found.sort(key=lambda m: (m.start, m.end, m.text))
    return found
