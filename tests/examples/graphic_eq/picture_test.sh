#!/bin/bash
# picture_test.sh SCRIPT PICTURE MODULE...: whether SCRIPT draws PICTURE from each of the modules, and says in one
# line what it can't load. Exit code 0: it does, 1: not; 77: there is no Python.
set -u
[ $# -ge 3 ] || { echo "usage: picture_test.sh SCRIPT PICTURE MODULE..." >&2; exit 2; }
script=$1
picture=$2
shift 2
command -v python3 >/dev/null || { echo "python3 is not installed"; exit 77; }
folder=$(mktemp -d) || exit 2
trap 'rm -rf "$folder"' EXIT
failed=0

for module in "$@"; do
    python3 "$script" "$module" "$folder/drawn.svg" && cmp "$folder/drawn.svg" "$picture" ||
        { echo "FAILED: draws another picture from $module"; failed=1; }
done

echo "no library" >"$folder/text.so"
for path in "$folder/none.so" "$folder/text.so" "$folder"; do
    python3 "$script" "$path" "$folder/none.svg" 2>"$folder/errors"
    [ $? = 1 ] && [ "$(wc -l <"$folder/errors")" = 1 ] && grep -q '^draw_response: ' "$folder/errors" ||
        { echo "FAILED: doesn't say in a line what is wrong with $path"; cat "$folder/errors"; failed=1; }
    [ ! -e "$folder/none.svg" ] || { echo "FAILED: leaves a picture of $path"; failed=1; }
done
exit $failed
