#!/usr/bin/env bash
# The Windows tests, run by `./kitra test --windows` once both Windows builds and the Linux
# programs they are compared with are built. Under wine64, with a Windows prefix of its own in
# the 64-bit build folder:
#   1. the 32-bit module is PE32 (i386) and both modules export exactly the four entry points;
#   2. the unit tests that make sense on Windows (conversions, settings, log text);
#   3. regsvr32 registers the 64-bit module: the class, its InprocServer32 (module path,
#      ThreadingModel Apartment) and the ProgID;
#   4. the test host creates the connector by its class (CoCreateInstance): identity constants,
#      the module's life count, LoadDefaults (the text stored is the Linux run's), ValidateSettings,
#      Config and ShowTrace (no windows yet, said plainly);
#   5. one import of a generated restaurant from a private MariaDB server through the module,
#      compared with the Linux run of the same data: the log text and every table's count;
#   6. ResetData empties the log table; regsvr32 /u leaves no key behind.
# Usage: run-tests.sh TOP LINUX_BUILD WIN32_BUILD WIN64_BUILD
set -euo pipefail

top="$1" linux_build="$2" win32_build="$3" win64_build="$4"
work="$win64_build/windows-test"
passed=0 failed=0

say() { printf '==> %s\n' "$*"; }
pass() { printf 'ok: %s\n' "$*"; passed=$((passed + 1)); }
fail() { printf 'FALHOU: %s\n' "$*"; failed=$((failed + 1)); }
check() {  # check DESCRIPTION COMMAND...
  local what="$1"
  shift
  if "$@"; then pass "$what"; else fail "$what"; fi
}

# wine64's loader lives in wine's own folder, outside PATH.
wine=""
for candidate in "$(command -v wine64 || true)" /usr/lib/wine/wine64 /usr/lib/x86_64-linux-gnu/wine/wine64; do
  if [ -n "$candidate" ] && [ -x "$candidate" ]; then wine="$candidate"; break; fi
done
[ -n "$wine" ] || { echo "wine64 is not installed (apt-get install wine64)" >&2; exit 1; }
wineserver="$(dirname "$wine")/wineserver"

export WINEPREFIX="$win64_build/wine-prefix"
export WINEDEBUG=-all
# No .NET or HTML engine: the tests run console programs only.
export WINEDLLOVERRIDES="mscoree=;mshtml="
# Wine's odbc32 hands ODBC calls to the machine's unixODBC, which finds the driver name in the
# project's odbcinst.ini.
export ODBCSYSINI="$linux_build/odbc"
unset DISPLAY

# A Linux path as Windows programs see it: Wine's drive Z: is the root of the file system.
winpath() { printf 'Z:%s' "${1//\//\\}"; }
run_windows() { "$wine" "$@" 2>&1 | tr -d '\r'; return "${PIPESTATUS[0]}"; }

rm -rf "$work"
mkdir -p "$work"
if [ ! -f "$WINEPREFIX/system.reg" ]; then
  say "preparing the Windows prefix in $WINEPREFIX"
  "$wine" wineboot --init >/dev/null 2>&1 || true
  "$wineserver" -w 2>/dev/null || true
fi

# 1. The modules' shape.
say "the modules' format and exports"
exports_of() {
  "$1" -p "$2" | awk '/\[Ordinal\/Name Pointer\] Table/ { on = 1; next } on && NF == 0 { on = 0 } on { print $NF }' | sort | tr '\n' ' '
}
expected="DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer "
check "the 32-bit module is PE32 for i386" \
  bash -c "i686-w64-mingw32-objdump -f '$win32_build/POSConnectorKitra.dll' | grep -q 'file format pei-i386'"
check "the 32-bit module exports exactly the four entry points" \
  test "$(exports_of i686-w64-mingw32-objdump "$win32_build/POSConnectorKitra.dll")" = "$expected"
check "the 64-bit module exports exactly the four entry points" \
  test "$(exports_of x86_64-w64-mingw32-objdump "$win64_build/POSConnectorKitra.dll")" = "$expected"

# 2. The unit tests.
for program in core_tests settings_tests log_tests; do
  say "$program (Windows)"
  if run_windows "$win64_build/tests/windows/$program.exe" >"$work/$program.txt"; then
    pass "$program: $(grep -E '^\[  PASSED  \]' "$work/$program.txt" || true)"
  else
    grep -E '^\[  FAILED  \]|Failure|error' "$work/$program.txt" | head -40 || true
    fail "$program (whole output in $work/$program.txt)"
  fi
done

# 3. Registration.
clsid="{3F6E9A24-71C8-4D5B-A0E2-8B9C4D17F5A6}"
progid="POSConnectorKitra.KitraConnector"
module="$(winpath "$win64_build/POSConnectorKitra.dll")"
say "regsvr32 $module"
check "regsvr32 registers the module" "$wine" regsvr32 /s "$module"
reg_value() {  # reg_value KEY [VALUE]: the value's data, empty when there is none
  local out
  if [ $# -eq 2 ]; then out="$(run_windows reg query "$1" /v "$2" || true)"; else out="$(run_windows reg query "$1" /ve || true)"; fi
  printf '%s\n' "$out" | awk -F'    ' '/REG_SZ/ { print $NF }'
}
check "InprocServer32 names the module" test "$(reg_value "HKCR\\CLSID\\$clsid\\InprocServer32")" = "$module"
check "ThreadingModel is Apartment" test "$(reg_value "HKCR\\CLSID\\$clsid\\InprocServer32" ThreadingModel)" = "Apartment"
check "the class names its ProgID" test "$(reg_value "HKCR\\CLSID\\$clsid\\ProgID")" = "$progid"
check "the ProgID names the class" test "$(reg_value "HKCR\\$progid\\CLSID")" = "$clsid"

# 4. and 5. A private MariaDB server with one generated restaurant, imported on Linux by
# kitra-host and on Windows through the registered module.
server="$work/mariadb"
# shellcheck disable=SC2064  # the paths are fixed now
trap "$(printf '%q stop %q >/dev/null 2>&1 || true; %q -k 2>/dev/null || true' "$top/tools/mariadb" "$server" "$wineserver")" EXIT
say "starting a private MariaDB server"
"$top/tools/mariadb" start "$server" >/dev/null
eval "$("$top/tools/mariadb" env "$server" | grep -E '^KITRA_MARIADB_(HOST|PORT|USER|PASSWORD)=')"
client=("$top/tools/mariadb" client "$server")
"${client[@]}" -e "CREATE DATABASE restaurante CHARACTER SET utf8mb4"
"${client[@]}" restaurante <"$top/restaurant/schema.sql"
"$linux_build/restaurant/kitra-restaurant-gen" --size tiny --seed 3 | "${client[@]}" restaurante

host="$linux_build/backoffice/kitra-host"
settings="$work/settings.xml"
cat >"$settings" <<EOX
<KitraConnectorSetting InvoiceTransDocument="VB" CreditTransDocument="FAC" StockTransDocument="GT" CashEntranceTransDocument="EC" CashWithdrawalTransDocument="SC" CustomerPaymentTransDocument="PCL" CustomerPaymentAccountDocument="ADC" SelfConsumptionTransDocument="AC" DefaultTenderPayment="1" DefaultTaxableGroup="1"><Restaurants><Restaurant Name="Centro" ServerName="$KITRA_MARIADB_HOST" ServerPort="$KITRA_MARIADB_PORT" ServerDBName="restaurante" ServerUser="$KITRA_MARIADB_USER" ServerPassword="$KITRA_MARIADB_PASSWORD" WorkstationID="1" ItemIDPrefix="C" DefaultWarehouseID="1" WasteWarehouseID="2" DefaultSupplierID="1" TransSerial="CEN" StockManagement="1" ImportDateEntities="2000-01-01 00:00:00" ImportDateTransactions="2000-01-01 00:00:00"/></Restaurants><TenderEquivalence><Tender POSTenderID="1" KitraTenderID="1"/><Tender POSTenderID="2" KitraTenderID="2"/><Tender POSTenderID="3" KitraTenderID="3"/><Tender POSTenderID="2" KitraTenderID="4"/><Tender POSTenderID="4" KitraTenderID="5"/><Tender POSTenderID="6" KitraTenderID="9999"/></TenderEquivalence><TaxableGroupEquivalence><TaxableGroup TaxableGroupID="1" KitraVAT="23"/><TaxableGroup TaxableGroupID="2" KitraVAT="13"/><TaxableGroup TaxableGroupID="3" KitraVAT="6"/><TaxableGroup TaxableGroupID="4" KitraVAT="0"/></TaxableGroupEquivalence></KitraConnectorSetting>
EOX
linux_data="$work/linux" windows_data="$work/windows"
for data in "$linux_data" "$windows_data"; do
  "$host" --data "$data" init >/dev/null
  "$host" --data "$data" series add CEN "Restaurante Centro" >/dev/null
done
say "the Linux run"
"$host" --data "$linux_data" settings load "$settings" >/dev/null
"$host" --data "$linux_data" settings show --reveal >"$work/linux-settings.xml"
"$host" --data "$linux_data" execute --quiet >"$work/linux-run.txt" 2>&1 || true

windows_host="$win64_build/tests/windows/kitra-windows-host.exe"
wdata="$(winpath "$windows_data")"
say "the Windows run"
check "the connector's identity through CoCreateInstance" \
  bash -c "$(printf '%q ' "$wine" "$windows_host" "$wdata" identity) > '$work/identity.txt' 2>&1"
sed 's/^/    /' "$work/identity.txt" | tr -d '\r'
check "LoadDefaults stores the settings" \
  bash -c "$(printf '%q ' "$wine" "$windows_host" "$wdata" load "$(winpath "$settings")") > '$work/load.txt' 2>&1"
"$host" --data "$windows_data" settings show --reveal >"$work/windows-settings.xml"
check "the stored settings are the Linux run's, byte for byte" \
  cmp -s "$work/linux-settings.xml" "$work/windows-settings.xml"
run_windows "$windows_host" "$wdata" validate >"$work/validate.txt" || true
check "ValidateSettings accepts the settings" grep -qx 'ValidateSettings = Verdadeiro' "$work/validate.txt"
run_windows "$windows_host" "$wdata" dialogs >"$work/dialogs.txt" || true
check "Config and ShowTrace say this build has no windows" \
  grep -q 'mensagem: Esta versão do conector para Windows ainda não tem janelas' "$work/dialogs.txt"
run_windows "$windows_host" "$wdata" execute >"$work/windows-run.txt" || true
check "the Windows run ends" grep -qx 'mensagem: A importação chegou ao fim.' "$work/windows-run.txt"

# The run's own moments (dates, times, log file names) masked.
mask_moments() {
  sed -E 's/[0-9]{4}-[0-9]{2}-[0-9]{2}[ T][0-9]{2}:[0-9]{2}:[0-9]{2}(\.[0-9]+)?/<data>/g;
          s/[0-9]{2}-[0-9]{2}-[0-9]{4} [0-9]{2}:[0-9]{2}:[0-9]{2}/<data>/g;
          s/[0-9]{8}_[0-9]{6}/<data>/g'
}
# The log text, the count of every table, and every table's rows.
log_text() {
  local data="$1" when
  when="$("$host" --data "$data" log list | awk -F'\t' '$1 == "Centro" { print $2; exit }')"
  "$host" --data "$data" log show Centro "$when" | mask_moments
}
table_counts() {
  local db="$1/backoffice.sqlite" table
  for table in $(sqlite3 "$db" "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name"); do
    printf '%s %s\n' "$table" "$(sqlite3 "$db" "SELECT COUNT(*) FROM \"$table\"")"
  done
}
table_rows() {
  local db="$1/backoffice.sqlite" table
  for table in $(sqlite3 "$db" "SELECT name FROM sqlite_master WHERE type = 'table' ORDER BY name"); do
    printf '== %s\n' "$table"
    if [ "$table" = account_settlements ]; then
      # The restaurant lists a receipt's documents in an order of its own (its statement joins
      # them without one), so a receipt's settlements are numbered in that order: they are
      # compared by receipt and entry.
      sqlite3 "$db" "SELECT ReceiptKey, EntryID, Amount, InvoiceValue FROM account_settlements ORDER BY 1, 2"
    else
      sqlite3 "$db" "SELECT * FROM \"$table\" ORDER BY 1"
    fi
  done | mask_moments
}
log_text "$linux_data" >"$work/linux-log.txt"
log_text "$windows_data" >"$work/windows-log.txt"
check "the import wrote a log" test -s "$work/windows-log.txt"
if cmp -s "$work/linux-log.txt" "$work/windows-log.txt"; then
  pass "the log text is the Linux run's"
else
  diff "$work/linux-log.txt" "$work/windows-log.txt" | head -20 || true
  fail "the log text is the Linux run's"
fi
table_counts "$linux_data" >"$work/linux-counts.txt"
table_counts "$windows_data" >"$work/windows-counts.txt"
if cmp -s "$work/linux-counts.txt" "$work/windows-counts.txt"; then
  pass "every table's count is the Linux run's ($(awk '{ n += $2 } END { print n }' "$work/windows-counts.txt") rows)"
else
  diff "$work/linux-counts.txt" "$work/windows-counts.txt" || true
  fail "every table's count is the Linux run's"
fi
table_rows "$linux_data" >"$work/linux-rows.txt"
table_rows "$windows_data" >"$work/windows-rows.txt"
if cmp -s "$work/linux-rows.txt" "$work/windows-rows.txt"; then
  pass "every table's rows are the Linux run's (the run's moments masked)"
else
  diff "$work/linux-rows.txt" "$work/windows-rows.txt" | head -20 || true
  fail "every table's rows are the Linux run's (the run's moments masked)"
fi

# 6. ResetData and unregistration.
run_windows "$windows_host" "$wdata" reset >/dev/null || true
check "ResetData empties the log table" \
  test "$(sqlite3 "$windows_data/backoffice.sqlite" 'SELECT COUNT(*) FROM Kitra2Log')" = 0
check "regsvr32 /u unregisters the module" "$wine" regsvr32 /s /u "$module"
check "no key of the class is left" bash -c "! $(printf '%q ' "$wine") reg query 'HKCR\\CLSID\\$clsid' >/dev/null 2>&1"
check "no key of the ProgID is left" bash -c "! $(printf '%q ' "$wine") reg query 'HKCR\\$progid' >/dev/null 2>&1"
echo "Windows: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
