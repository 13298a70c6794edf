#!/bin/sh
# Writes the manual page of kitra-host from the program's own --help, so that the page and the
# help are one text: make-manpage.sh PROGRAM VERSION OUTPUT (a gzipped troff file).
set -eu
program="$1" version="$2" output="$3"

help="$("$program" --help)"
[ -n "$help" ] || { echo "make-manpage.sh: $program --help printed nothing" >&2; exit 1; }

# troff: a backslash is "\e"; a line that starts with "." or "'" would be a request.
escape() { sed -e 's/\\/\\e/g' -e "s/^\([.']\)/\\\\\&\1/"; }

{
  printf '.TH KITRA-HOST 1 "" "Kitrana %s" "Comandos do utilizador"\n' "$version"
  printf '.SH NOME\nkitra-host \\- a retaguarda de referência e o conector de importação Kitrana\n'
  # The help's sections ("Comandos:", "Opções:", ...) are the page's sections; the first lines,
  # up to the first of them, are its synopsis and description.
  printf '%s\n' "$help" | escape | awk '
    BEGIN { print ".SH SINOPSE"; print ".nf" }
    /^[^ ].*:$/ {
      heading = substr($0, 1, length($0) - 1)
      print ".fi"; print ".SH \"" heading "\""; print ".nf"; next
    }
    { print }
    END { print ".fi" }'
  printf '.SH FICHEIROS\n.TP\n/etc/kitra/components.registry\n'
  printf 'o registo de componentes da máquina, onde o pacote regista o conector.\n'
  printf '.TP\n/var/lib/kitra/backoffice\na pasta de dados da retaguarda do pacote, do utilizador kitra.\n'
  printf '.SH "VER TAMBÉM"\n/usr/share/doc/kitra/README.md, /usr/share/doc/kitra/docs/administration.md\n'
} | gzip -9n >"$output"
