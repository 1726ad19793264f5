"""One-line faults of a C++ source, for script/mutate."""
import collections
import re

# The lines of `path` from number `line` on, as they are and as they become.
Mutant = collections.namedtuple("Mutant", "path line old new")

SWAPS = [
    ("==", "!="), ("!=", "=="), ("(?<![<>-])<=", "<"), ("(?<![<>-])>=", ">"), (" < ", " <= "), (" > ", " >= "),
    ("&&", "||"), (r"\|\|", "&&"), (r" \+ ", " - "), (" - ", " + "), (" & ", " | "), (r" \| ", " & "),
    (" << ", " >> "), (" >> ", " << "), (r"\+\+", "--"), ("--", "++"), (r" \+= ", " -= "), (" -= ", " += "),
    (" &= ~", " |= "), (r" \|= ", " &= "), (r"\btrue\b", "false"), (r"\bfalse\b", "true"), (r"\bTRUE\b", "FALSE"),
    (r"\bFALSE\b", "TRUE"), ("!(?=[a-zA-Z(])", ""), ("~(?=[a-zA-Z(])", ""),
]
NUMBER = re.compile(r"(?<![\w.])(0x[0-9A-Fa-f]+|\d+)(?![\w.])")
CONDITION = re.compile(r"(\s*(?:\} else )?(?:if|while) \()(.*)(\) \{)$")
STATEMENT = re.compile(r"^\s+[\w:>.*()\[\]-]+(\(.*\)| [|&+-]?= .*);$")
DECLARATION = re.compile(r"^\s*(const|constexpr|auto|static|return|[A-Z]\w+[*&]? \w+( =|;|\{|\[)|DWORD|bool|BOOL|WORD)\b")
NO_CODE = re.compile(r"^\s*(//|#|using |namespace |static_assert|extern |template|class |struct |\}|$)|TEXT\(\"|^\w.*\($")


def is_statement(line):
    return STATEMENT.match(line) and not DECLARATION.match(line)


def other_number(text):
    return hex(int(text, 0) ^ 1) if text.startswith("0x") else str(int(text) + 1)


def replaced(code, match, text):
    return code[:match.start()] + text + code[match.end():]


def changes_of(code):
    """What the code of one line may become."""
    for pattern, replacement in SWAPS:
        for match in re.finditer(pattern, code):
            yield replaced(code, match, replacement)
    for match in NUMBER.finditer(code):
        yield replaced(code, match, other_number(match.group()))
    condition = CONDITION.match(code)
    if condition:
        yield "%s!(%s)%s" % condition.groups()


def mutants_of(path, text):
    lines = text.split("\n")
    for number, line in enumerate(lines, 1):
        if NO_CODE.search(line):
            continue
        code = line.split("  //")[0].split(" // ")[0]
        for changed in changes_of(code):
            yield Mutant(path, number, line, changed + line[len(code):])
        if is_statement(code):
            yield Mutant(path, number, line, "")
            following = lines[number] if number < len(lines) else ""
            if is_statement(following) and following != line:
                yield Mutant(path, number, line + "\n" + following, following + "\n" + line)
