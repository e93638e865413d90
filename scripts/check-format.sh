#!/usr/bin/env bash
# Every tracked C and C++ file is formatted with the repository's .clang-format.
# Usage: scripts/check-format.sh        (check; lists offending files, exits 1)
#        scripts/check-format.sh --fix  (reformat them in place)
set -euo pipefail
cd "$(dirname "$0")/.."
clang_format=${CLANG_FORMAT:-clang-format}
mapfile -t files < <(git ls-files '*.c' '*.h' '*.cpp' '*.hpp')
if [[ "${1:-}" == "--fix" ]]; then
    "$clang_format" -i "${files[@]}"
    exit 0
fi
"$clang_format" --dry-run --Werror "${files[@]}"
echo "${#files[@]} files formatted as .clang-format asks"
