#!/bin/bash
# replay_test.sh PROGRAM: that the replay of a corpus fails where it should. PROGRAM is fuzz/replay.cpp with a
# target that fails at inputs that begin with an x.
set -u
program=$1
folder=$(mktemp -d) || exit 1
trap 'rm -rf "$folder"' EXIT
wrong=0
cases=0

# gives CASE CODE WORDS ARGUMENT...
gives() {
    local said result
    said=$("$program" "${@:4}" 2>&1)
    result=$?
    cases=$((cases + 1))
    if [ $result != "$2" ] || [[ $said != *"$3"* ]]; then
        echo "wrong: $1 gave $result, not $2 with '$3': $said"
        wrong=$((wrong + 1))
    fi
}

mkdir "$folder/"{none,good,bad,unreadable}
: >"$folder/good/empty"
printf 'a\0x' >"$folder/good/some"
printf 'a' >"$folder/bad/a"
printf 'x' >"$folder/bad/b"
printf 'a' >"$folder/unreadable/a"
ln -s nowhere "$folder/unreadable/b"

gives 'a folder with good inputs' 0 '2 files, none with a fault' "$folder/good"
gives 'an input with a fault' 134 $'a\nb' "$folder/bad"
gives 'a folder without files' 1 'there is no file in' "$folder/none"
gives 'a folder that is not there' 1 'error: ' "$folder/nowhere"
gives 'a file that leads nowhere' 1 'b is no file' "$folder/unreadable"
gives 'a folder in the folder' 1 'is no file' "$folder"
gives 'no folder' 2 'usage: '
gives 'two folders' 2 'usage: ' "$folder/good" "$folder/good"

echo "$cases cases, $wrong wrong"
[ $wrong = 0 ]
