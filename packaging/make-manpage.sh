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
  # Every variable that kitra-host and the modules it loads read (the package test checks the
  # list against the sources).
  cat <<'EOT'
.SH AMBIENTE
.TP
KITRA_HOST_DATA
A pasta de dados quando não se dá \-\-data; sem ela, ./kitra\-data.
.TP
KITRA_COMPONENT_REGISTRY
O ficheiro do registo de componentes onde register e unregister escrevem e onde o
conector e a classe da retaguarda são procurados; definida, é o único registo lido
(sem ela, o do utilizador e depois o da máquina).
.TP
XDG_CONFIG_HOME, HOME
Sem KITRA_COMPONENT_REGISTRY, o registo do utilizador é
$XDG_CONFIG_HOME/kitra/components.registry, ou $HOME/.config/kitra/components.registry.
.TP
KITRA_CONNECTOR_MODULE
O ficheiro do módulo do conector (POSConnectorKitra.so) quando nenhum registo o nomeia;
sem ela, o que está ao lado do programa, depois o da instalação (../lib/kitra).
.TP
KITRA_HOST_BUSY_TIMEOUT_MS
Quantos milissegundos um comando espera pela escrita de outro programa na retaguarda
antes de desistir (30000).
.TP
KITRA_HOST_RUN_BUSY_TIMEOUT_MS
O mesmo para as escritas de execute (900000, 15 minutos).
.TP
KITRA_HOST_RECORDS_PER_COMMIT
Quantos registos execute grava, no máximo, em cada transação (20000; 1 grava cada um
à parte).
.TP
KITRA_CONNECTION_TIMEOUT, KITRA_COMMAND_TIMEOUT
Os segundos de espera pela ligação a um restaurante (15) e por cada resposta do seu
servidor (30); 0 espera sem limite.
.TP
KITRA_READ_AHEAD_CONNECTIONS
Quantas ligações a mais ao restaurante leem adiantadas as linhas e os pagamentos dos
documentos seguintes (3; de 0 a 16; 0 lê cada um quando é preciso).
.TP
ODBCSYSINI
A pasta do odbcinst.ini que nomeia o controlador "MySQL ODBC 5.1 Driver"; sem ela, o
registo da máquina, ou então a pasta odbc da instalação (/usr/share/kitra/odbc).
.TP
DISPLAY, WAYLAND_DISPLAY, QT_QPA_PLATFORM
Os comandos que abrem janelas precisam de uma delas (um ecrã, ou a plataforma do Qt).
EOT
  printf '.SH FICHEIROS\n.TP\n/etc/kitra/components.registry\n'
  printf 'o registo de componentes da máquina, onde o pacote regista o conector.\n'
  printf '.TP\n/var/lib/kitra/backoffice\na pasta de dados da retaguarda do pacote, do utilizador kitra.\n'
  printf '.SH "VER TAMBÉM"\n/usr/share/doc/kitra/README.md, /usr/share/doc/kitra/docs/administration.md\n'
} | gzip -9n >"$output"
