#!/usr/bin/env python3
"""Writes the SVG drawings of the module's images beside this script, or into the folder given as argument."""

import pathlib
import sys

sys.dont_write_bytecode = True  # no cache folder among the sources

import frames
import pictograms


def main():
    folder = pathlib.Path(sys.argv[1]) if len(sys.argv) > 1 else pathlib.Path(__file__).resolve().parent
    folder.mkdir(parents=True, exist_ok=True)
    for draw in pictograms.ALL + frames.ALL:
        draw().write(folder)


if __name__ == "__main__":
    main()
