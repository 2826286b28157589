"""Changes values in a YAML text and leaves everything else as its writer put it."""

import io
from collections.abc import Iterator, Mapping
from typing import Any, NamedTuple

from ruamel.yaml import YAML
from ruamel.yaml.comments import CommentedMap, CommentedSeq
from ruamel.yaml.error import MarkedYAMLError

from .yaml_values import plain, same


class YamlProblem(ValueError):
    """The text is no YAML mapping; `line` counts from 1, or is None when unknown."""

    def __init__(self, text: str, line: int | None = None) -> None:
        super().__init__(text)
        self.line = line


class Layout(NamedTuple):
    """How many blanks the writer indents by, and where list dashes stand."""

    indent: int
    dash: int


def parse(text: str) -> tuple[CommentedMap, Layout]:
    """Return the document, comments included, and its layout. Raises YamlProblem."""
    try:
        document = _yaml().load(text)
    except MarkedYAMLError as error:
        mark = error.problem_mark or error.context_mark
        line = mark.line + 1 if mark else None
        raise YamlProblem(_one_line(error.problem or error.context), line) from None
    except Exception as error:  # noqa: BLE001  the library also stumbles in ways of its own
        raise YamlProblem(_one_line(str(error))) from None
    document = CommentedMap() if document is None else document
    if not isinstance(document, CommentedMap):
        raise YamlProblem('the file must hold "section:" lines', 1)
    _check(document)
    return document, _layout(document)


def _check(document: CommentedMap) -> None:
    """Refuse what YAML can say and Python's own types cannot hold."""
    try:
        plain(document)
    except TypeError:
        raise YamlProblem("a key must be a plain word, not a list or a mapping") from None
    except RecursionError:
        raise YamlProblem("a value contains itself, or nests too deeply") from None


def _layout(document: CommentedMap) -> Layout:
    indent, dash = 2, 0
    for child, column in _blocks(document):
        if isinstance(child, CommentedSeq):
            dash = max(child.lc.col - column, 0)
        else:
            indent = max(child.lc.col - column, 1)
    return Layout(max(indent, 2), dash)


def _blocks(parent: Any) -> Iterator[tuple[Any, int]]:
    """Yield (block, column of its parent) from the last to the first, so that the first wins."""
    children = list(parent.values()) if isinstance(parent, CommentedMap) else list(parent)
    for child in reversed(children):
        if isinstance(child, (CommentedMap, CommentedSeq)) and not child.fa.flow_style():
            yield from _blocks(child)
            if isinstance(parent, CommentedMap):
                yield child, parent.lc.col


def line_of(document: CommentedMap, key: str) -> int:
    """Return the line, from 1, on which a top-level key stands, be it in by "<<" or not."""
    place = (document.lc.data or {}).get(key, (0,))
    return int(place[0]) + 1


def updated_text(document: CommentedMap, layout: Layout, wanted: Mapping[str, Any]) -> str:
    """Return the document's text with its values made equal to `wanted`."""
    _update(document, wanted)
    text = _render(document, layout)
    if same(plain(parse(text)[0]), wanted) or not _shares_nodes(text):
        return text
    # One anchored value stands in several places that now differ: write each out.
    return _render(plain(wanted), layout)


def _update(document: CommentedMap, wanted: Mapping[str, Any]) -> None:
    for key in [key for key in document if key not in wanted]:
        del document[key]
    for key, value in wanted.items():
        if key not in document:
            _append(document, key, value)
        elif isinstance(document[key], dict) and isinstance(value, Mapping):
            _update(document[key], value)
        elif not same(plain(document[key]), value):
            document[key] = value


def _append(document: CommentedMap, key: Any, value: Any) -> None:
    # The library hangs the comment before the next section on the last key of this one: it moves
    # on to the new last key, or the new key would stand below that comment.
    last = next(reversed(document), None)
    document[key] = value
    comments = document.ca.items.get(last)
    token = comments[2] if comments and len(comments) > 2 else None
    if token is None or "\n" not in token.value:
        return
    own, _, below = token.value.partition("\n")
    token.value = own + "\n"
    if not own:
        comments[2] = None
    document.yaml_set_comment_before_after_key(key)
    document.ca.items[key] = [None, None, type(token)("\n" + below, token.start_mark), None]


def _shares_nodes(text: str) -> bool:
    return "&" in text and "*" in text


def _render(document: Any, layout: Layout) -> str:
    stream = io.StringIO()
    yaml = _yaml()
    yaml.indent(mapping=layout.indent, sequence=layout.dash + 2, offset=layout.dash)
    yaml.dump(document, stream)
    return stream.getvalue()


def _yaml() -> YAML:
    yaml = YAML()
    yaml.preserve_quotes = True
    yaml.width = 1_000_000  # long lines stay lines
    yaml.allow_unicode = True
    return yaml


def _one_line(text: str | None) -> str:
    return " ".join((text or "not valid YAML").split())
