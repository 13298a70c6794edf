#!/usr/bin/env bash
# The Debian package as an administrator gets it: built with CPack from this build, unpacked
# into a scratch root with dpkg -x, and the unpacked kitra-host run from there (info, init,
# settings load, check against a restaurant on the run's private MariaDB server). It checks the
# package's contents and dependencies, the manual page against --help, and that the back office
# it makes is its owner's only, whatever the umask, and that check warns when it is not.
#   package_test.sh BUILD_DIR SOURCE_DIR       ($KITRA_MARIADB_ENV: the run's server)
set -euo pipefail
build="$1" top="$2"

scratch="$(mktemp -d "${TMPDIR:-/tmp}/kitra-package.XXXXXX")"
client=("$top/tools/mariadb" client "$(dirname "$KITRA_MARIADB_ENV")")
database="package_$$"
cleanup() {
  "${client[@]}" -e "DROP DATABASE IF EXISTS $database" >/dev/null 2>&1 || true
  rm -rf "$scratch"
}
trap cleanup EXIT

fail() { echo "FAILED: $*" >&2; exit 1; }
contains() { grep -qF -- "$2" <<<"$1" || fail "$3: '$2' not in:"$'\n'"$1"; }

# --- the package --------------------------------------------------------------------------
cpack -G DEB --config "$build/CPackConfig.cmake" -B "$scratch/package" >"$scratch/cpack.log" 2>&1 ||
  { cat "$scratch/cpack.log" >&2; fail "cpack could not build the package"; }
debs=("$scratch"/package/*.deb)
[ ${#debs[@]} -eq 1 ] && [ -f "${debs[0]}" ] || fail "cpack made no single .deb: ${debs[*]}"
deb="${debs[0]}"
[[ "$(basename "$deb")" =~ ^kitra_[0-9]+\.[0-9]+\.[0-9]+_$(dpkg --print-architecture)\.deb$ ]] ||
  fail "package file name: $(basename "$deb")"

depends="$(dpkg-deb -f "$deb" Depends)"
for package in odbc-mariadb unixodbc libsqlite3-0 libqt6widgets6 libpugixml1v5 libfmt9 libodbc2 adduser; do
  [[ ", $depends," == *", $package"[\ ,]* ]] || fail "Depends lacks $package: $depends"
done

contents="$(dpkg-deb -c "$deb" | awk '{ print $6 }')"
for file in ./usr/bin/kitra-host ./usr/lib/kitra/POSConnectorKitra.so \
    ./usr/lib/kitra/POSConnectorKitraDialogs.so ./usr/lib/kitra/kitra-host-desktop.so \
    ./usr/share/kitra/odbc/odbcinst.ini ./usr/share/man/man1/kitra-host.1.gz \
    ./usr/share/doc/kitra/README.md ./usr/share/doc/kitra/docs/administration.md \
    ./usr/lib/systemd/system/kitra-import.service ./usr/lib/systemd/system/kitra-import.timer; do
  grep -qxF "$file" <<<"$contents" || fail "the package lacks $file"
done
# Installed disabled: nothing of the package enables the timer.
! grep -q '^\./etc/systemd' <<<"$contents" || fail "the package enables a unit"

dpkg-deb -e "$deb" "$scratch/control"
for script in postinst prerm postrm; do
  [ -x "$scratch/control/$script" ] || fail "no executable $script"
  sh -n "$scratch/control/$script" || fail "$script is not a valid shell script"
done
contains "$(cat "$scratch/control/postinst")" 'register /usr/lib/kitra/POSConnectorKitra.so' "postinst"
contains "$(cat "$scratch/control/postinst")" 'odbcinst -i -d -f /usr/share/kitra/odbc/odbcinst.ini' "postinst"
contains "$(cat "$scratch/control/prerm")" '/usr/bin/kitra-host unregister' "prerm"

# --- unpacked into a scratch root ----------------------------------------------------------
root="$scratch/root"
dpkg -x "$deb" "$root"
host="$root/usr/bin/kitra-host"

service="$(cat "$root/usr/lib/systemd/system/kitra-import.service")"
contains "$service" 'User=kitra' "the service"
contains "$service" 'ExecStart=/usr/bin/kitra-host --data /var/lib/kitra/backoffice execute --quiet' "the service"
contains "$(cat "$root/usr/lib/systemd/system/kitra-import.timer")" 'OnCalendar=*-*-* 02:30' "the timer"
contains "$(cat "$root/usr/share/kitra/odbc/odbcinst.ini")" '[MySQL ODBC 5.1 Driver]' "odbcinst.ini"

# The program knows nothing of this build: its own folder leads it to the modules and to the
# ODBC driver name of the unpacked tree.
export HOME="$scratch/home"
export KITRA_COMPONENT_REGISTRY="$root/etc/kitra/components.registry"
unset KITRA_CONNECTOR_MODULE KITRA_HOST_DATA ODBCSYSINI XDG_CONFIG_HOME

# The manual page is the program's --help: every line of the help is a line of the page.
page="$(zcat "$root/usr/share/man/man1/kitra-host.1.gz")"
contains "$page" '.TH KITRA-HOST 1' "the manual page"
help="$("$host" --help)"
[ "$(wc -l <<<"$help")" -gt 20 ] || fail "kitra-host --help is too short: $help"
while IFS= read -r line; do
  [ -z "$line" ] && continue
  [[ "$line" == *:  && "$line" != " "* ]] && continue  # the help's headings are the page's sections
  grep -qxF -- "$line" <<<"$page" || fail "the manual page lacks the help's line '$line'"
done <<<"$help"

registered="$("$host" register)"
[ "$registered" = "Componente registado: $root/usr/lib/kitra/POSConnectorKitra.so
Componente registado: $root/usr/lib/kitra/KitraBackOffice.so" ] ||
  fail "register: $registered"

data="$scratch/data"
created="$(umask 022 && "$host" --data "$data" init)" || fail "init failed: $created"
info="$("$host" --data "$data" info 2>&1)" || fail "info failed: $info"
contains "$info" 'ConnectorID: ' "info"
modes() { (cd "$data" && find . -printf '%m %p\n' | sort -k2); }
[ "$(stat -c %a "$data")" = 700 ] || fail "data folder (umask 022): $(modes)"
[ "$(stat -c %a "$data/backoffice.sqlite")" = 600 ] || fail "database (umask 022): $(modes)"

# --- settings load and check against a restaurant database ------------------------------------
eval "$(grep -E '^KITRA_MARIADB_(HOST|PORT|ROOT_USER|ROOT_PASSWORD)=' "$KITRA_MARIADB_ENV")"
"${client[@]}" -e "CREATE DATABASE $database CHARACTER SET utf8mb4"
"${client[@]}" "$database" <"$top/restaurant/schema.sql"

(umask 000 && "$host" --data "$data" series add PKG "Restaurante do pacote" >/dev/null) ||
  fail "series add failed"
cat >"$scratch/settings.xml" <<EOX
<KitraConnectorSetting InvoiceTransDocument="VB" CreditTransDocument="FAC" StockTransDocument="GT" CashEntranceTransDocument="EC" CashWithdrawalTransDocument="SC" CustomerPaymentTransDocument="PCL" CustomerPaymentAccountDocument="ADC" SelfConsumptionTransDocument="AC" DefaultTenderPayment="1" DefaultTaxableGroup="1"><Restaurants><Restaurant Name="Pacote" ServerName="$KITRA_MARIADB_HOST" ServerPort="$KITRA_MARIADB_PORT" ServerDBName="$database" ServerUser="$KITRA_MARIADB_ROOT_USER" ServerPassword="$KITRA_MARIADB_ROOT_PASSWORD" WorkstationID="1" ItemIDPrefix="K" DefaultWarehouseID="1" WasteWarehouseID="2" DefaultSupplierID="1" TransSerial="PKG" StockManagement="1" ImportDateEntities="2000-01-01 00:00:00" ImportDateTransactions="2000-01-01 00:00:00"/></Restaurants><TenderEquivalence><Tender POSTenderID="1" KitraTenderID="1"/></TenderEquivalence><TaxableGroupEquivalence><TaxableGroup TaxableGroupID="1" KitraVAT="23"/></TaxableGroupEquivalence></KitraConnectorSetting>
EOX
loaded="$(umask 000 && "$host" --data "$data" settings load "$scratch/settings.xml" 2>&1)" ||
  fail "settings load failed: $loaded"

status=0
checked="$(umask 000 && "$host" --data "$data" check 2>&1)" || status=$?
[ $status -eq 0 ] || fail "check exited $status: $checked"
grep -qP '^Pacote\tok\t' <<<"$checked" || fail "check did not reach the restaurant: $checked"

# Nothing the commands made, with umask 022 or 000, is open to the group or others.
open="$(find "$data" -perm /077 -printf '%m %p\n')"
[ -z "$open" ] || fail "open to others: $open"$'\n'"$(modes)"

# check warns about a back office others can read, and says how to close it.
chmod 755 "$data"
chmod 644 "$data/backoffice.sqlite"
status=0
checked="$("$host" --data "$data" check 2>&1)" || status=$?
[ $status -eq 3 ] || fail "check exited $status with an open back office: $checked"
contains "$checked" "AVISO: A pasta de dados '$data' está aberta a outros utilizadores (modo 0755" "check"
contains "$checked" "Corrija com: chmod 700 '$data'" "check"
contains "$checked" "AVISO: A base de dados '$data/backoffice.sqlite' está aberta a outros utilizadores (modo 0644" "check"
chmod 700 "$data"
chmod 600 "$data/backoffice.sqlite"
"$host" --data "$data" check >/dev/null 2>&1 || fail "check still warns after chmod"

echo "the package installs and its kitra-host runs from $(basename "$deb") unpacked"
