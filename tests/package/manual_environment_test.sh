#!/usr/bin/env bash
# The manual page's AMBIENTE section names every environment variable that kitra-host and the
# modules it loads (the connector, the back office, their dialogs) read: each name the sources
# hand to getenv or to WholeNumberFromEnvironment, directly or from a list they go through.
#   manual_environment_test.sh SOURCE_DIR MANUAL_PAGE_GZ
set -euo pipefail
top="$1" page="$2"

fail() { echo "FAILED: $*" >&2; exit 1; }

[ -f "$page" ] || fail "no manual page at $page (it is built with kitra-host)"
section="$(zcat "$page" | awk '/^\.SH / { inside = ($2 == "AMBIENTE") ; next } inside')"
[ -n "$section" ] || fail "the manual page has no AMBIENTE section"

sources=()
for area in ado backoffice connector core host import log settings; do
  [ -d "$top/$area" ] && sources+=("$top/$area")
done
# Whole files (-z), so that a call broken over two lines is found too.
read_names() {
  grep -rhozE --include='*.cpp' --include='*.h' \
    '(getenv|FromEnvironment)\([[:space:]]*"[A-Za-z_][A-Za-z0-9_]*"' "${sources[@]}" |
    tr '\n\0' ' \n' | sed -E 's/.*"([A-Za-z0-9_]+)"$/\1/'
  # for (const char* variable : {"A", "B"}) ... std::getenv(variable)
  grep -rhozE --include='*.cpp' --include='*.h' \
    'for \(const char\* variable : \{[^}]*\}\)' "${sources[@]}" |
    tr '\n\0' ' \n' | grep -oE '"[A-Za-z_][A-Za-z0-9_]*"' | tr -d '"'
}
names="$(read_names | sort -u)"
count="$(wc -l <<<"$names")"
# The sources read a dozen and more; far fewer means the search above no longer finds them.
[ "$count" -ge 12 ] || fail "only $count variables found in the sources: $names"

missing=()
while IFS= read -r name; do
  grep -qE "(^|[^A-Za-z0-9_])$name([^A-Za-z0-9_]|$)" <<<"$section" || missing+=("$name")
done <<<"$names"
[ ${#missing[@]} -eq 0 ] || fail "the manual page's AMBIENTE section lacks: ${missing[*]}"
echo "the manual page names all $count variables the program reads"
