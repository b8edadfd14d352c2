"""python -m parcelvane [--json] [--no-crlf] FILE: what `parcelvane show` prints."""

import sys

from parcelvane import _native


def main(argv=None) -> int:
    args = list(sys.argv[1:] if argv is None else argv)
    sys.stdout.flush()
    sys.stderr.flush()
    return _native.show(args)


if __name__ == "__main__":
    sys.exit(main())
