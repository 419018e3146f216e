#!/usr/bin/python3
"""The help book has the same pages and headings in every language, and every link and picture in it leads somewhere.

Usage: help_test.py HELP_FOLDER
"""
import html.parser
import pathlib
import sys

BOOK = pathlib.Path(sys.argv[1])


class Page(html.parser.HTMLParser):
    def __init__(self, path):
        super().__init__()
        self.headings, self.targets, self.language = [], [], ""
        self.feed(path.read_text())

    def handle_starttag(self, tag, attrs):
        values = dict(attrs)
        if tag in ("h1", "h2", "table", "figure"):
            self.headings.append(tag)
        if tag == "html":
            self.language = values.get("lang")
        self.targets += [values[key] for key in ("href", "src") if key in values]


problems = []
english = {path.name: Page(path) for path in BOOK.glob("*.html")}
for folder in [BOOK, *(path for path in BOOK.iterdir() if path.is_dir())]:
    pages = {path.name: Page(path) for path in folder.glob("*.html")}
    if pages.keys() != english.keys():
        problems.append(f"{folder.name}: the pages are {sorted(pages)}")
    for name, page in pages.items():
        problems += [f"{folder.name}/{name}: {target} is not there" for target in page.targets if not (folder / target).is_file()]
        if page.language != ("en" if folder == BOOK else folder.name):
            problems.append(f"{folder.name}/{name}: its language is {page.language}")
        if name in english and page.headings != english[name].headings:
            problems.append(f"{folder.name}/{name}: {page.headings}, in English {english[name].headings}")
print("\n".join(problems))
sys.exit(len(problems) > 0)
