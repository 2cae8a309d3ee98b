#!/usr/bin/env bash
# The manual page names every option and command of --help, and none that --help does not know.
set -euo pipefail
binary=$1
page=$2
from_help=$(QT_QPA_PLATFORM=offscreen "$binary" --help | grep -oE -- '--[a-z][a-z-]*' | sort -u)
from_page=$(sed 's/\\-/-/g' "$page" | grep -oE -- '--[a-z][a-z-]*' | sort -u)
missing=$(comm -23 <(echo "$from_help") <(echo "$from_page"))
unknown=$(comm -13 <(echo "$from_help") <(echo "$from_page"))
[ -z "$missing" ] || { echo "options of --help missing from the manual page:" $missing; exit 1; }
[ -z "$unknown" ] || { echo "options in the manual page that --help does not know:" $unknown; exit 1; }
# Commands are the arguments listed at the start of their line, beside the FILE.png one.
for command in $(QT_QPA_PLATFORM=offscreen "$binary" --help | sed -n '/^Arguments:/,$p' |
                 grep -oE '^  [a-z]+ ' | grep -vx '  file '); do
    grep -q "^\.B $command\$" "$page" || { echo "command $command missing from the manual page"; exit 1; }
done
echo "the manual page and --help agree"
