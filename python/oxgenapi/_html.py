"""What notebooks show of features and maps."""

from __future__ import annotations

from html import escape
from typing import Iterable

_ROW = "<tr><th style='text-align:left'>{}</th><td style='text-align:left'>{}</td></tr>"

# Shows the items whose text holds what is typed, and the categories that hold one of them.
_SEARCH = ("let w=this.value.toLowerCase();for(let i of this.parentNode.querySelectorAll('li'))"
           "i.hidden=!i.textContent.toLowerCase().includes(w);"
           "for(let d of this.parentNode.querySelectorAll('details'))d.open=w!==''")


def table(title: str, rows: Iterable[tuple[str, str]]) -> str:
    cells = "".join(_ROW.format(escape(label), escape(text)) for label, text in rows if text)
    return f"<table><caption><b>{escape(title)}</b></caption>{cells}</table>"


def branch(title: str, items: Iterable[str]) -> str:
    """A category of a tree, as one item."""
    return f"<li><details><summary>{escape(title)}</summary><ul>{''.join(items)}</ul></details></li>"


def leaf(name: str, kind: str, about: str) -> str:
    return f"<li title='{escape(about)}'><code>{escape(name)}</code> <small>{escape(kind)}</small></li>"


def tree(title: str, items: Iterable[str]) -> str:
    return (f"<div><b>{escape(title)}</b> <input type='search' placeholder='search' oninput=\"{_SEARCH}\">"
            f"<ul>{''.join(items)}</ul></div>")
