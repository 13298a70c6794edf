#!/usr/bin/env bash
# The Debian package passes Debian's own package checker, lintian, without an error or a
# warning: what Debian asks of every package (its copyright and changelog, description lines
# that fit, maintainer scripts that leave systemd to Debian's helpers).
#   lintian_test.sh BUILD_DIR
set -euo pipefail
build="$1"

fail() { echo "FAILED: $*" >&2; exit 1; }

command -v lintian >/dev/null ||
  fail "lintian is not installed; './kitra setup' installs it with the other packages the project needs"

scratch="$(mktemp -d "${TMPDIR:-/tmp}/kitra-lintian.XXXXXX")"
trap 'rm -rf "$scratch"' EXIT
cpack -G DEB --config "$build/CPackConfig.cmake" -B "$scratch/package" >"$scratch/cpack.log" 2>&1 ||
  { cat "$scratch/cpack.log" >&2; fail "cpack could not build the package"; }
deb="$(ls "$scratch"/package/kitra_*.deb)"

# The changelog's newest entry is the package's version.
version="$(dpkg-deb -f "$deb" Version)"
dpkg-deb --fsys-tarfile "$deb" | tar -xO ./usr/share/doc/kitra/changelog.gz | gzip -dc |
  head -n 1 | grep -qF "kitra ($version) " || fail "the changelog does not begin with version $version"

status=0
report="$(lintian --fail-on error,warning "$deb" 2>&1)" || status=$?
if [ $status -ne 0 ] || grep -qE '^[EW]: ' <<<"$report"; then
  fail "lintian (exit $status):"$'\n'"$report"
fi
echo "lintian finds no error and no warning in $(basename "$deb")"
