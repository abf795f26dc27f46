"""``python3 -m norvik batch ...`` (the host's ``norvik batch`` runs this)."""

import sys

from .batch import main

if __name__ == "__main__":
    sys.exit(main(sys.argv[1:]))
