"""The program `python -m zelvoran_anpr.fleet`; worker processes import this file as well."""

import sys

if __name__ == "__main__":
    from .command import main

    sys.exit(main(sys.argv[1:]))
