"""Named API tokens: `python -m zelvoran_anpr.server.tokens add NAME --scope read`."""

import argparse
import sys

from .config.named_tokens import READ, SCOPES, TokenProblem, add_token, named_tokens, revoke_token


def main(arguments: list[str] | None = None) -> int:
    """Add, list or revoke tokens; the status is 1, with one line, when that cannot be done."""
    given = _parser().parse_args(arguments)
    try:
        given.do(given)
    except (TokenProblem, OSError) as error:
        print(f"Error: {error}", file=sys.stderr)
        return 1
    return 0


def _parser() -> argparse.ArgumentParser:
    parser = argparse.ArgumentParser(prog="python -m zelvoran_anpr.server.tokens")
    actions = parser.add_subparsers(required=True)
    add = actions.add_parser("add", help="make a token and print it, this once")
    add.add_argument("name")
    add.add_argument("--scope", action="append", choices=SCOPES, help="default: read")
    add.set_defaults(do=_add)
    revoke = actions.add_parser("revoke", help="let a token count no more, at once")
    revoke.add_argument("name")
    revoke.set_defaults(do=lambda given: revoke_token(given.name))
    listing = actions.add_parser("list", help="show names, scopes and dates")
    listing.set_defaults(do=lambda _: _list())
    return parser


def _add(given: argparse.Namespace) -> None:
    scopes = tuple(scope for scope in SCOPES if scope in (given.scope or [READ]))
    print(add_token(given.name, scopes))


def _list() -> None:
    for token in named_tokens():
        print(f"{token.name}  {','.join(token.scopes)}  {token.created}")


if __name__ == "__main__":
    sys.exit(main())
