#!/bin/bash
# Whether every script parses, and those that are started by name may be.
set -u
cd "$(dirname "$0")/../.." || exit 1
wrong=0
count=0
while IFS= read -r file; do
    read -r first <"$file"
    case $first in
        '#!'*bash) shell=bash ;;
        '#!'*/sh) shell=sh ;;
        *) case $file in *.sh) shell=bash ;; *) continue ;; esac ;;
    esac
    count=$((count + 1))
    "$shell" -n "$file" || wrong=$((wrong + 1))
    # Tests are started by ctest, parts by those that source them.
    if [[ $first == '#!'* && $file != tests/* && ! -x $file ]]; then
        echo "$file can't be executed"
        wrong=$((wrong + 1))
    fi
done < <(find .ci scripts tests bench fuzz -type f \
    \( -name '*.sh' -o -path 'scripts/*' -o -path '.ci/*' -o -path 'bench/run' -o -path 'fuzz/run' \))
echo "$count scripts, $wrong wrong"
[ $count -gt 0 ] && [ $wrong = 0 ]
