"""Tables in the project's pages, each between "<!-- name -->" and "<!-- end -->"."""

import re


def table(rows):
    """Markdown of rows of text, the headings first."""
    heading, *rest = [f"| {' | '.join(row)} |" for row in rows]
    return "\n".join([heading, "|" + "---|" * len(rows[0]), *rest])


def put(page, name, text):
    """Replaces what stands at a name by a text, where the page has that name."""
    replaced = re.sub(rf"(<!-- {name} -->\n).*?(<!-- end -->)",
                      lambda match: f"{match[1]}{text}\n{match[2]}",
                      page.read_text(encoding="utf-8"), flags=re.DOTALL)
    page.write_text(replaced, encoding="utf-8")
