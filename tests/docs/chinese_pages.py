#!/usr/bin/env python3
"""Holds the Chinese pages to the English ones, and the card for print to its page.

    chinese_pages.py SOURCE_TREE

A Chinese page has the headings, table rows, pictures, list items and command blocks of the English one,
in the same order; what the launcher shows stands in both to the letter. Its last line names the English
text that it was made from: whoever changes the English page brings the Chinese one up to date, then
writes the new name there, which this test tells.
"""
import hashlib
import html
import pathlib
import re
import sys

PAGES = {
    "README.md": "README.zh-CN.md",
    "docs/operators.md": "docs/zh/operators.md",
    "docs/support.md": "docs/zh/support.md",
}
CARD, PRINTED = "docs/zh/card.md", "docs/zh/card.html"
PICTURES_OF_THE_CARD = 5

# The columns of a table that hold what the program shows, by the table's first heading.
TOLD_COLUMNS = {"Chinese": (0, 1), "Text": (0,), "Line": (0,)}
# Cells of those columns that describe a text.
DESCRIBED = re.compile(r"a text under |`\[class\]`|as the parser said it")
MARK = re.compile(r"^<!-- (\S+) ([0-9a-f]{12}) -->\n\Z", re.M)


def cells(row):
    return [cell.strip() for cell in re.split(r"(?<!\\)\|", row.strip()[1:-1])]


def shape(text):
    """What of a page is the same in every language, as (kind, what must agree, line) in order."""
    for number, line in enumerate(text.split("\n"), 1):
        if re.match(r"#+ ", line):
            yield "heading", len(line.split()[0]), number
        elif line.startswith("|"):
            yield "row", len(cells(line)), number
        elif re.match(r"(- |\d+\. )", line):
            yield "list item", line.split()[0], number
        elif line.startswith("    ") and not line.startswith("        "):
            yield "command", line.split("#")[0].split()[:1], number
        for picture in re.findall(r"^!\[.*?\]\((.*?)\)", line):
            yield "picture", re.sub(r"-(en|zh)\.png$", "", pathlib.Path(picture).name), number


def told(text):
    """The rows whose cells hold what the program shows: None for another row."""
    columns = ()
    lines = text.split("\n")
    for number, line in enumerate(lines):
        if not line.startswith("|"):
            columns = ()
        elif number + 1 < len(lines) and re.match(r"\|(-+\|)+$", lines[number + 1]):
            columns = TOLD_COLUMNS.get(cells(line)[0], ())
            yield None
        elif not re.match(r"\|(-+\|)+$", line):
            yield {column: cells(line)[column] for column in columns
                   if not DESCRIBED.match(cells(line)[column])}


def rows(text):
    return [cells(line) for line in text.split("\n")
            if line.startswith("|") and not re.match(r"\|(-+\|)+$", line)]


def name_of(text):
    """The same however its lines are broken."""
    return hashlib.sha256(" ".join(text.split()).encode()).hexdigest()[:12]


def compare(english_page, chinese_page, english, chinese):
    """Complaints about one pair of pages."""
    ours, theirs = list(shape(english)), list(shape(chinese))
    for one, other in zip(ours, theirs):
        if one[:2] != other[:2]:
            yield (f"{english_page}:{one[2]} has a {one[0]} ({one[1]}) where {chinese_page}:{other[2]} "
                   f"has a {other[0]} ({other[1]})")
            return
    if len(ours) != len(theirs):
        yield f"{english_page} has {len(ours)} headings, rows and the like, {chinese_page} {len(theirs)}"
        return
    for wanted, row in zip(told(english), rows(chinese)):
        for column, text in (wanted or {}).items():
            if row[column] != text:
                yield f"{chinese_page}: {row[column]!r} stands for {text!r}"
    mark = MARK.search(chinese)
    awaited = f"<!-- {pathlib.Path(english_page).name} {name_of(english)} -->"
    if mark is None or mark[0].strip() != awaited:
        yield (f"{english_page} has changed: bring {chinese_page} up to date, then let its last line be "
               f"{awaited}")


def plain(text):
    return re.sub(r"\s+", "", text)


def compare_card(page, printed):
    """The sheet for print says what the page says, in its order; the link to the sheet aside."""
    page = re.sub(r"打印用的版本：\[.*?\]\(.*?\)。", "", page)
    pictures = re.findall(r"!\[.*?\]\((.*?)\)", page)
    page = re.sub(r"!\[.*?\]\(.*?\)", "", page)
    words = plain(re.sub(r"^(#+|-) |\*\*", "", page, flags=re.M))
    body = printed.split("<body>")[-1]
    if plain(html.unescape(re.sub(r"<[^>]*>", "", body))) != words:
        yield f"{PRINTED} does not say what {CARD} says"
    if re.findall(r'<img src="(.*?)"', body) != pictures:
        yield f"{PRINTED} does not show the pictures of {CARD}"
    if len(pictures) != PICTURES_OF_THE_CARD:
        yield f"{CARD} has {len(pictures)} pictures, not {PICTURES_OF_THE_CARD}"


def dead_links(tree, page, text):
    for target in re.findall(r"\]\(([^):#]+)\)", text) + re.findall(r'<img src="(.*?)"', text):
        if not (tree / page).parent.joinpath(target).exists():
            yield f"{page} leads to {target}, which is not there"


def main():
    tree = pathlib.Path(sys.argv[1])
    texts = {page: (tree / page).read_text(encoding="utf-8")
             for page in (*PAGES, *PAGES.values(), CARD, PRINTED)}
    complaints = []
    for english, chinese in PAGES.items():
        complaints += compare(english, chinese, texts[english], texts[chinese])
        print(f"{english}: {len(list(shape(texts[english])))} headings, rows and the like")
    complaints += compare_card(texts[CARD], texts[PRINTED])
    for page, text in texts.items():
        complaints += dead_links(tree, page, text)
    print(*complaints, sep="\n")
    return 1 if complaints else 0


if __name__ == "__main__":
    sys.exit(main())
