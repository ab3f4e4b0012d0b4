#!/usr/bin/env bash
# Fails when a C++ source does not follow .clang-format; prints the offending files.
set -euo pipefail
cd "$(dirname "$0")/.."
files=$(find app bench engine johnson settings support tests ui -name '*.cpp' -o -name '*.h' | sort)
bad=()
for f in $files; do
  clang-format --dry-run -Werror "$f" >/dev/null 2>&1 || bad+=("$f")
done
if [ ${#bad[@]} -ne 0 ]; then
  echo "Not formatted (run: clang-format -i FILE):"
  printf '  %s\n' "${bad[@]}"
  exit 1
fi
