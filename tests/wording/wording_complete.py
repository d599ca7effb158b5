#!/usr/bin/env python3
"""Every text the project's code hands to its wording tables as a literal has
an entry in each table, and each entry keeps the %N places of its text.

Usage: wording_complete.py <source dir>. Prints what is missing and exits 1."""
import json
import pathlib
import re
import sys

root = pathlib.Path(sys.argv[1])
CODE_DIRS = ["FactoryMgr", "host", "platform", "tools"]
# Wording("..."), ParamWording("..."), GetWording(QStringLiteral("...")) and the like, string
# literals joined as the compiler joins them.
CALL = re.compile(r'\b(?:Wording|GetWording|ParamWording)\(\s*(?:QStringLiteral\(|QString::fromUtf8\(|QLatin1String\()?\s*'
                  r'((?:"(?:[^"\\]|\\.)*"\s*)+)')
LITERAL = re.compile(r'"((?:[^"\\]|\\.)*)"')
PLACE = re.compile(r'%\d')


def unescape(text):
    return text.encode("utf-8").decode("unicode_escape").encode("latin-1").decode("utf-8") if "\\" in text else text


wanted = {}
for directory in CODE_DIRS:
    for path in sorted((root / directory).rglob("*")):
        if path.suffix not in (".cpp", ".h"):
            continue
        for match in CALL.finditer(path.read_text(encoding="utf-8")):
            text = unescape("".join(LITERAL.findall(match.group(1))))
            wanted.setdefault(text, set()).add(str(path.relative_to(root)))

problems = []
tables = sorted((root / "resources" / "Wording").glob("*.json"))
if not tables or len(wanted) < 100:
    problems.append(f"found {len(tables)} wording table(s) and {len(wanted)} texts: the search itself is broken")
for table_path in tables:
    table = json.loads(table_path.read_text(encoding="utf-8"))
    for text, places in sorted(wanted.items()):
        if text not in table:
            problems.append(f"{table_path.name}: no entry for {text!r} ({', '.join(sorted(places))})")
        elif sorted(PLACE.findall(text)) != sorted(PLACE.findall(table[text])):
            problems.append(f"{table_path.name}: {text!r} has places {sorted(PLACE.findall(text))}, "
                            f"its entry {sorted(PLACE.findall(table[text]))}")

for problem in problems:
    print(problem)
print(f"{len(wanted)} texts, {len(tables)} table(s), {len(problems)} problem(s)")
sys.exit(1 if problems else 0)
