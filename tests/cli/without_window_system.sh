#!/bin/sh
# Fails when any of the given programs or modules needs the window system's libraries (Qt),
# directly or through another library: the import path must run on a machine without a display.
status=0
for file in "$@"; do
  if ! needed=$(ldd "$file" 2>&1); then
    echo "cannot read the libraries of $file: $needed" >&2
    status=1
  elif printf '%s\n' "$needed" | grep -q 'libQt'; then
    echo "$file needs the window system:" >&2
    printf '%s\n' "$needed" | grep 'libQt' >&2
    status=1
  fi
done
[ $status -eq 0 ] && echo "none of the $# files needs the window system"
exit $status
