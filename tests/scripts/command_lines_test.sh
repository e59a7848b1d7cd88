#!/bin/bash
# What the scripts say to a user before they do anything, and which packages they take for missing.
set -u
root=$(cd "$(dirname "$0")/../.." && pwd -P)
folder=$(mktemp -d) || exit 1
trap 'rm -rf "$folder"' EXIT
cd "$folder" || exit 1
wrong=0
cases=0

# gives CODE WORDS COMMAND...: the command ends so and its output has these words.
gives() {
    local code=$1 words=$2 said result
    shift 2
    said=$("$@" 2>&1 </dev/null)
    result=$?
    cases=$((cases + 1))
    if [ $result != "$code" ] || [[ $said != *"$words"* ]]; then
        echo "wrong: $* gave $result, not $code with '$words':"
        sed 's/^/    /' <<<"$said"
        wrong=$((wrong + 1))
    fi
}

gives 0 'usage: scripts/demo [INPUT [OUTPUT]]' "$root/scripts/demo" --help
gives 2 'usage: scripts/demo' "$root/scripts/demo" a b c
gives 1 'scripts/demo: there is no file sound.wav' "$root/scripts/demo" sound.wav
gives 0 'usage: scripts/test [PRESET...]' "$root/scripts/test" --help
gives 2 "'relaese' is no preset of" "$root/scripts/test" release relaese
gives 2 'usage: wine_run' "$root/scripts/wine_run"
gives 2 'usage: format' "$root/scripts/format" --chek
gives 2 'usage: scripts/tidy' "$root/scripts/tidy" --chek
gives 0 'usage: fuzz/run [--runs N] [TARGET...]' "$root/fuzz/run" --help
gives 0 '  reg_text' "$root/fuzz/run" --help
gives 2 'no such target: reg_tex;' "$root/fuzz/run" reg_text reg_tex
gives 2 'unknown option --rnus' "$root/fuzz/run" --rnus 5
gives 2 '--runs takes a whole number' "$root/fuzz/run" --runs 0
gives 2 '--runs takes a whole number' "$root/fuzz/run" --runs

. "$root/scripts/lib/packages.sh"
gives 0 'no-such-package' missing_packages dpkg no-such-package base-files
gives 1 '' missing_packages dpkg base-files
[ "$(missing_packages dpkg no-such-package)" = no-such-package ] || { echo "wrong: missing_packages"; wrong=$((wrong + 1)); }

echo "$cases commands, $wrong wrong"
[ $wrong = 0 ]
