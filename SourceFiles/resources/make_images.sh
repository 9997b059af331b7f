#!/bin/sh
# Draws the module's images anew: drawings/draw_images.py writes the SVG files, rsvg-convert renders each to a PNG.
# Needs python3 and rsvg-convert (Debian: python3, librsvg2-bin). With --check it draws into a temporary folder and
# compares with the files that lie here, changing nothing; another release of librsvg may render edges a shade apart.
set -eu

here=$(cd "$(dirname "$0")" && pwd)
target=$here
if [ "${1:-}" = "--check" ]; then
    target=$(mktemp -d)
    trap 'rm -rf "$target"' EXIT
elif [ $# -gt 0 ]; then
    echo "usage: $0 [--check]" >&2
    exit 2
fi

python3 "$here/drawings/draw_images.py" "$target/drawings"

status=0
for svg in "$target"/drawings/*.svg; do
    name=$(basename "$svg" .svg)
    rsvg-convert --format=png --output="$target/$name.png" "$svg"
    if [ "$target" != "$here" ]; then
        for file in "drawings/$name.svg" "$name.png"; do
            cmp -s "$target/$file" "$here/$file" || { echo "differs: $file" >&2; status=1; }
        done
    fi
done
exit $status
