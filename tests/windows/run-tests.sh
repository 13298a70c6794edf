#!/usr/bin/env bash
# The Windows suites, run by `./kitra test` once both Windows builds and the Linux programs they
# are compared with are built. Each twin runs the same suite, in a Windows prefix of its own in
# its build folder: the 32-bit one under the 32-bit Wine of the i386 root (tools/wine32), the
# 64-bit one under wine64.
#   1. the modules' format, and their exports: exactly the four entry points;
#   2. the unit tests that make sense on Windows (conversions, settings, log text);
#   3. regsvr32 registers both modules: the connector's class, its InprocServer32 (module path,
#      ThreadingModel Apartment), its ProgID, its type library (TypeLib key) and its interface
#      (the automation marshaler); the back office's class;
#   4. a C++ host creates the connector by class and calls it through the type library's
#      interface, early-bound (and once late-bound): identity, the module's life count,
#      LoadDefaults (the text stored is the Linux run's), ValidateSettings, Config and ShowTrace
#      (the dialogs driven by a user at the screen), one import with an automation notifier, compared with the
#      Linux run of the same data: the log text and every table's count and rows; ResetData;
#   5. the system's script host (cscript, VBScript) does the same as a client nobody here wrote:
#      CreateObject by ProgID, every identity member, LoadDefaults with accents, ValidateSettings,
#      a script class as notifier, Execute into the back office the machine's setting names,
#      compared with the Linux run, and the statuses it was told; a run told to a notifier that
#      fails; ResetData, Delete;
#   6. regsvr32 /u leaves no key: class, ProgID, type library, interface.
# Usage: run-tests.sh TOP LINUX_BUILD TWIN=BUILD...   (TWIN: 32 or 64)
set -euo pipefail

top="$1" linux_build="$2"
shift 2
passed=0 failed=0

say() { printf '==> %s\n' "$*"; }
pass() { printf 'ok: %s\n' "$*"; passed=$((passed + 1)); }
fail() { printf 'FALHOU: %s\n' "$*"; failed=$((failed + 1)); }
check() {  # check DESCRIPTION COMMAND...
  local what="$1"
  shift
  if "$@"; then pass "$what"; else fail "$what"; fi
}
same_files() {  # same_files DESCRIPTION EXPECTED ACTUAL
  if cmp -s "$2" "$3"; then
    pass "$1"
  else
    diff "$2" "$3" | head -20 || true
    fail "$1"
  fi
}

wine64="/usr/lib/wine/wine64"
for candidate in "$(command -v wine64 || true)" /usr/lib/wine/wine64 /usr/lib/x86_64-linux-gnu/wine/wine64; do
  if [ -n "$candidate" ] && [ -x "$candidate" ]; then wine64="$candidate"; break; fi
done

export WINEDEBUG=-all
# No .NET or HTML engine: the tests run console programs and scripts only.
export WINEDLLOVERRIDES="mscoree=;mshtml="
unset DISPLAY

# A Linux path as Windows programs see it: Wine's drive Z: is the root of the file system.
winpath() { printf 'Z:%s' "${1//\//\\}"; }

# The twin being tested: how its programs are run.
twin="" twin_build=""
win() {
  if [ "$twin" = 32 ]; then
    "$top/tools/wine32" run "$@"
  else
    "$wine64" "$@"
  fi
}
# Output without the carriage returns of Windows' line ends.
run_windows() { win "$@" 2>&1 | tr -d '\r'; return "${PIPESTATUS[0]}"; }
stop_wine() {
  if [ "$twin" = 32 ]; then
    "$top/tools/wine32" kill-server >/dev/null 2>&1 || true
  else
    "$(dirname "$wine64")/wineserver" -k 2>/dev/null || true
    "$(dirname "$wine64")/wineserver" -w 2>/dev/null || true
  fi
}

# The restaurant: a private MariaDB server with one generated restaurant, shared by both twins.
server="$linux_build/windows-test-mariadb"
cleanup() {
  for entry in "${twins[@]}"; do
    twin="${entry%%=*}"
    WINEPREFIX="${entry#*=}/wine-prefix" stop_wine
  done
  "$top/tools/mariadb" stop "$server" >/dev/null 2>&1 || true
}
twins=("$@")
trap cleanup EXIT
rm -rf "$server"
say "starting a private MariaDB server"
"$top/tools/mariadb" start "$server" >/dev/null
eval "$("$top/tools/mariadb" env "$server" | grep -E '^KITRA_MARIADB_(HOST|PORT|USER|PASSWORD)=')"
client=("$top/tools/mariadb" client "$server")
"${client[@]}" -e "CREATE DATABASE restaurante CHARACTER SET utf8mb4"
"${client[@]}" restaurante <"$top/restaurant/schema.sql"
"$linux_build/restaurant/kitra-restaurant-gen" --size tiny --seed 3 | "${client[@]}" restaurante

# The restaurant's name has accents, so that every text of the run carries them: the settings,
# the log file's name, the log, the statuses.
restaurant="Praça"
common="$linux_build/windows-test"
rm -rf "$common"
mkdir -p "$common"
settings="$common/settings.xml"
cat >"$settings" <<EOX
<KitraConnectorSetting InvoiceTransDocument="VB" CreditTransDocument="FAC" StockTransDocument="GT" CashEntranceTransDocument="EC" CashWithdrawalTransDocument="SC" CustomerPaymentTransDocument="PCL" CustomerPaymentAccountDocument="ADC" SelfConsumptionTransDocument="AC" DefaultTenderPayment="1" DefaultTaxableGroup="1"><Restaurants><Restaurant Name="$restaurant" ServerName="$KITRA_MARIADB_HOST" ServerPort="$KITRA_MARIADB_PORT" ServerDBName="restaurante" ServerUser="$KITRA_MARIADB_USER" ServerPassword="$KITRA_MARIADB_PASSWORD" WorkstationID="1" ItemIDPrefix="C" DefaultWarehouseID="1" WasteWarehouseID="2" DefaultSupplierID="1" TransSerial="CEN" StockManagement="1" ImportDateEntities="2000-01-01 00:00:00" ImportDateTransactions="2000-01-01 00:00:00"/></Restaurants><TenderEquivalence><Tender POSTenderID="1" KitraTenderID="1"/><Tender POSTenderID="2" KitraTenderID="2"/><Tender POSTenderID="3" KitraTenderID="3"/><Tender POSTenderID="2" KitraTenderID="4"/><Tender POSTenderID="4" KitraTenderID="5"/><Tender POSTenderID="6" KitraTenderID="9999"/></TenderEquivalence><TaxableGroupEquivalence><TaxableGroup TaxableGroupID="1" KitraVAT="23"/><TaxableGroup TaxableGroupID="2" KitraVAT="13"/><TaxableGroup TaxableGroupID="3" KitraVAT="6"/><TaxableGroup TaxableGroupID="4" KitraVAT="0"/></TaxableGroupEquivalence></KitraConnectorSetting>
EOX
# The script host reads text files as the system's code page or as UTF-16: it gets UTF-16.
{ printf '\xff\xfe'; iconv -f UTF-8 -t UTF-16LE "$settings"; } >"$common/settings-utf16.xml"

host="$linux_build/backoffice/kitra-host"
new_back_office() {
  "$host" --data "$1" init >/dev/null
  "$host" --data "$1" series add CEN "Restaurante Centro" >/dev/null
}

say "the Linux run"
linux_data="$common/linux"
new_back_office "$linux_data"
"$host" --data "$linux_data" settings load "$settings" >/dev/null
"$host" --data "$linux_data" settings show --reveal >"$common/linux-settings.xml"
"$host" --data "$linux_data" execute --quiet >"$common/linux-run.txt" 2>&1 || true
"$host" --data "$linux_data" settings show --reveal >"$common/linux-settings-after.xml"
# What a Linux run tells its notifier, recorded as the Windows clients record it: another run
# of the same data by a minimal host.
statuses_data="$common/linux-statuses"
new_back_office "$statuses_data"
"$host" --data "$statuses_data" settings load "$settings" >/dev/null
ODBCSYSINI="$linux_build/odbc" "$linux_build/tests/connector/kitra-statuses-host" "$statuses_data" >"$common/linux-statuses-run.txt"
grep '^estado: ' "$common/linux-statuses-run.txt" >"$common/linux-statuses.txt"

# The run's own moments (dates, times, log file names) masked.
mask_moments() {
  sed -E 's/[0-9]{4}-[0-9]{2}-[0-9]{2}[ T][0-9]{2}:[0-9]{2}:[0-9]{2}(\.[0-9]+)?/<data>/g;
          s/[0-9]{2}-[0-9]{2}-[0-9]{4} [0-9]{2}:[0-9]{2}:[0-9]{2}/<data>/g;
          s/[0-9]{8}_[0-9]{6}/<data>/g'
}
# The log text, the count of every table, and every table's rows.
log_text() {
  local data="$1" when
  when="$("$host" --data "$data" log list | awk -F'\t' -v r="$restaurant" '$1 == r { print $2; exit }')"
  "$host" --data "$data" log show "$restaurant" "$when" | mask_moments
}
# The back office's tables, but restaurant_imports: the command-line host's own record of its
# runs (where each restaurant's next run starts), which a host that calls the component itself
# does not keep.
compared_tables() {
  sqlite3 "$1" "SELECT name FROM sqlite_master WHERE type = 'table' AND name <> 'restaurant_imports' ORDER BY name"
}
table_counts() {
  local db="$1/backoffice.sqlite" table
  for table in $(compared_tables "$db"); do
    printf '%s %s\n' "$table" "$(sqlite3 "$db" "SELECT COUNT(*) FROM \"$table\"")"
  done
}
# The columns of a table, but those named.
columns_except() {  # columns_except DB TABLE NAME...
  local db="$1" table="$2" names
  shift 2
  names="$(printf "'%s'," "$@")"
  sqlite3 "$db" "SELECT group_concat(name, ', ') FROM pragma_table_info('$table') WHERE name NOT IN (${names%,})"
}
# Every table's rows, the run's moments masked.
table_rows() {
  local db="$1/backoffice.sqlite" table
  for table in $(compared_tables "$db"); do
    printf '== %s\n' "$table"
    case "$table" in
      account_settlements)
        # The restaurant lists a receipt's documents in an order of its own (its statement joins
        # them without one), so a receipt's settlements are numbered in that order: they are
        # compared by receipt and entry.
        sqlite3 "$db" "SELECT ReceiptKey, EntryID, Amount, InvoiceValue FROM account_settlements ORDER BY 1, 2" | mask_moments ;;
      document_lines|stock_movements)
        # Nor has its statement of a document's lines an order (the server may join its tables
        # either way round), and the import numbers lines and their stock movements as they
        # come: lines are compared without their numbers.
        sqlite3 "$db" "SELECT $(columns_except "$db" "$table" LineNumber MovementID) FROM $table" |
          mask_moments | LC_ALL=C sort ;;
      document_history)
        sqlite3 "$db" "SELECT * FROM document_history ORDER BY 1" |
          mask_moments | sed -E 's/^linha [0-9]+: /linha: /' | LC_ALL=C sort ;;
      connector_settings|connector_settings_history)
        # They say which program saved the settings, the host's own name: compared without it.
        sqlite3 "$db" "SELECT $(columns_except "$db" "$table" UpdatedBy StoredBy ReplacedBy) FROM $table ORDER BY 1" |
          mask_moments ;;
      *)
        sqlite3 "$db" "SELECT * FROM \"$table\" ORDER BY 1" | mask_moments ;;
    esac
  done
}
log_text "$linux_data" >"$common/linux-log.txt"
table_counts "$linux_data" >"$common/linux-counts.txt"
table_rows "$linux_data" >"$common/linux-rows.txt"
[ -s "$common/linux-log.txt" ] || { echo "the Linux run left no log; see $common/linux-run.txt" >&2; exit 1; }

# The imported back office against the Linux run's.
compare_with_linux() {  # compare_with_linux WHO DATA: WHO's files in $work are named after DATA's folder
  local who="$1" data="$2" out="$work/$(basename "$2")"
  log_text "$data" >"$out-log.txt"
  check "$who: the import wrote a log" test -s "$out-log.txt"
  same_files "$who: the log text is the Linux run's" "$common/linux-log.txt" "$out-log.txt"
  table_counts "$data" >"$out-counts.txt"
  same_files "$who: every table's count is the Linux run's ($(awk '{ n += $2 } END { print n }' "$out-counts.txt") rows)" \
    "$common/linux-counts.txt" "$out-counts.txt"
  table_rows "$data" >"$out-rows.txt"
  same_files "$who: every table's rows are the Linux run's (the run's moments masked)" \
    "$common/linux-rows.txt" "$out-rows.txt"
}

exports_of() {
  "$1" -p "$2" | awk '/\[Ordinal\/Name Pointer\] Table/ { on = 1; next } on && NF == 0 { on = 0 } on { print $NF }' | sort | tr '\n' ' '
}
reg_value() {  # reg_value KEY [VALUE]: the value's data, empty when there is none
  local out
  if [ $# -eq 2 ]; then out="$(run_windows reg query "$1" /v "$2" || true)"; else out="$(run_windows reg query "$1" /ve || true)"; fi
  printf '%s\n' "$out" | awk -F'    ' '/REG_SZ/ { print $NF }'
}
no_key() { ! win reg query "$1" >/dev/null 2>&1; }

clsid="{3F6E9A24-71C8-4D5B-A0E2-8B9C4D17F5A6}"
progid="POSConnectorKitra.KitraConnector"
libid="{77CD966E-A763-4268-8C1F-A4EDDF9F3AF1}"
iid="{2E9DE85E-88EF-44BA-9D4A-4CE67FEA77E8}"
backoffice_clsid="{1C192219-07BF-4A43-95DD-552B008C5A9D}"
backoffice_progid="KitraBackOffice.BusinessLayer"
automation_marshaler="{00020424-0000-0000-C000-000000000046}"

suite() {
  local build="$twin_build" arch objdump format system
  if [ "$twin" = 32 ]; then
    arch=i686; objdump=i686-w64-mingw32-objdump; format=pei-i386; system=win32
  else
    arch=x86-64; objdump=x86_64-w64-mingw32-objdump; format=pei-x86-64; system=win64
  fi
  work="$build/windows-test"
  rm -rf "$work"
  mkdir -p "$work"
  export WINEPREFIX="$build/wine-prefix"
  if [ "$twin" = 32 ]; then
    # The 32-bit Wine sees these folders at the same paths as here.
    export KITRA_WINE32_SHARE="$top:$build:$linux_build"
  else
    # wine64's odbc32 hands ODBC calls to the machine's unixODBC, which finds the driver name in
    # the project's odbcinst.ini (the i386 root registers its own).
    export ODBCSYSINI="$linux_build/odbc"
  fi
  if ! win cmd /c exit 0 >/dev/null 2>&1; then
    say "preparing the Windows prefix in $WINEPREFIX"
    win wineboot --init >/dev/null 2>&1 || true
  fi
  # Windows without a screen: Wine's null display driver keeps real windows, with their
  # messages, focus and drawing into memory, where no X server is there to show them.
  win reg add 'HKCU\Software\Wine\Drivers' /v Graphics /t REG_SZ /d null /f >/dev/null 2>&1 || true
  # The prefix's desktop process reads the display driver once, when it starts: the one that
  # preparing the prefix started (with no driver that works here) must go, or no window opens.
  stop_wine

  say "[$twin-bit] the modules' format and exports"
  local expected="DllCanUnloadNow DllGetClassObject DllRegisterServer DllUnregisterServer " module
  for module in POSConnectorKitra KitraBackOffice; do
    check "[$twin-bit] $module.dll is $format" \
      bash -c "$objdump -f '$build/$module.dll' | grep -q 'file format $format'"
    check "[$twin-bit] $module.dll exports exactly the four entry points" \
      test "$(exports_of "$objdump" "$build/$module.dll")" = "$expected"
  done

  local program
  for program in core_tests settings_tests log_tests dialogs_tests; do
    say "[$twin-bit] $program"
    if run_windows "$build/tests/windows/$program.exe" >"$work/$program.txt"; then
      pass "[$twin-bit] $program: $(grep -E '^\[  PASSED  \]' "$work/$program.txt" || true)"
    else
      grep -E '^\[  FAILED  \]|Failure|error' "$work/$program.txt" | head -40 || true
      fail "[$twin-bit] $program (whole output in $work/$program.txt)"
    fi
  done

  local connector_module backoffice_module
  connector_module="$(winpath "$build/POSConnectorKitra.dll")"
  backoffice_module="$(winpath "$build/KitraBackOffice.dll")"
  say "[$twin-bit] regsvr32"
  check "[$twin-bit] regsvr32 registers the connector" win regsvr32 /s "$connector_module"
  check "[$twin-bit] regsvr32 registers the back office" win regsvr32 /s "$backoffice_module"
  check "[$twin-bit] InprocServer32 names the module" \
    test "$(reg_value "HKCR\\CLSID\\$clsid\\InprocServer32")" = "$connector_module"
  check "[$twin-bit] ThreadingModel is Apartment" \
    test "$(reg_value "HKCR\\CLSID\\$clsid\\InprocServer32" ThreadingModel)" = "Apartment"
  check "[$twin-bit] the class names its ProgID" test "$(reg_value "HKCR\\CLSID\\$clsid\\ProgID")" = "$progid"
  check "[$twin-bit] the ProgID names the class" test "$(reg_value "HKCR\\$progid\\CLSID")" = "$clsid"
  check "[$twin-bit] the class names its type library" test "$(reg_value "HKCR\\CLSID\\$clsid\\TypeLib")" = "$libid"
  check "[$twin-bit] the type library is registered for $system at the module" \
    test "$(reg_value "HKCR\\TypeLib\\$libid\\1.0\\0\\$system")" = "$connector_module"
  check "[$twin-bit] IConnector is marshalled by the automation marshaler" \
    test "$(reg_value "HKCR\\Interface\\$iid\\ProxyStubClsid32")" = "$automation_marshaler"
  check "[$twin-bit] the back office's ProgID names its class" \
    test "$(reg_value "HKCR\\$backoffice_progid\\CLSID")" = "$backoffice_clsid"

  # The C++ host: its own back office, attached to the business layer's class.
  local windows_host="$build/tests/windows/kitra-windows-host.exe" data="$work/host" wdata
  new_back_office "$data"
  wdata="$(winpath "$data")"
  say "[$twin-bit] a C++ host, early-bound"
  if run_windows "$windows_host" "$wdata" identity >"$work/identity.txt"; then
    pass "[$twin-bit] the connector's identity through CoCreateInstance"
  else
    fail "[$twin-bit] the connector's identity through CoCreateInstance"
  fi
  sed 's/^/    /' "$work/identity.txt"
  run_windows "$windows_host" "$wdata" load "$(winpath "$settings")" >"$work/load.txt" || true
  check "[$twin-bit] LoadDefaults stores the settings" grep -qx 'ok: LoadDefaults devolve Verdadeiro' "$work/load.txt"
  "$host" --data "$data" settings show --reveal >"$work/host-settings.xml"
  same_files "[$twin-bit] the stored settings are the Linux run's, byte for byte" \
    "$common/linux-settings.xml" "$work/host-settings.xml"
  run_windows "$windows_host" "$wdata" validate >"$work/validate.txt" || true
  check "[$twin-bit] ValidateSettings accepts the settings" grep -qx 'ValidateSettings = Verdadeiro' "$work/validate.txt"
  # The dialogs, in a back office of their own: what OK stores is not the Linux run's.
  local dialogs_data="$work/dialogs"
  new_back_office "$dialogs_data"
  "$host" --data "$dialogs_data" settings load "$settings" >/dev/null
  run_windows "$windows_host" "$(winpath "$dialogs_data")" dialogs >"$work/dialogs.txt" || true
  sed 's/^/    /' "$work/dialogs.txt"
  check "[$twin-bit] Config opens the settings dialog: Cancel gives False and stores nothing" \
    bash -c "grep -qx 'ok: Config cancelado devolve Falso' '$work/dialogs.txt' && grep -qx 'ok: Cancelar não guarda nada' '$work/dialogs.txt'"
  check "[$twin-bit] Config: the restaurant editor opens from the list, OK gives True and stores" \
    bash -c "grep -qx 'ok: o editor abre o restaurante escolhido' '$work/dialogs.txt' && grep -qx 'ok: Config aceite devolve Verdadeiro' '$work/dialogs.txt' && grep -qx 'ok: OK guarda as configurações' '$work/dialogs.txt'"
  check "[$twin-bit] ShowTrace opens the import log list, an import's log from it, until Sair" \
    bash -c "grep -qx 'ok: o log da importação abre com o seu texto' '$work/dialogs.txt' && grep -qx 'ok: o utilizador fechou o log de importações' '$work/dialogs.txt'"
  if grep -q '^FALHOU' "$work/dialogs.txt"; then
    # Again here, beside the verdict, so that a shortened log of the run still shows why.
    grep -A3 '^FALHOU' "$work/dialogs.txt" | sed 's/^/    /'
    fail "[$twin-bit] every check of the dialogs held"
  else
    pass "[$twin-bit] every check of the dialogs held"
  fi
  run_windows "$windows_host" "$wdata" execute >"$work/host-run.txt" || true
  check "[$twin-bit] the run ends" grep -qx 'mensagem: A importação chegou ao fim.' "$work/host-run.txt"
  check "[$twin-bit] the automation notifier was told the progress and let go" \
    bash -c "grep -qx 'ok: o notificador recebeu o progresso' '$work/host-run.txt' && grep -qx 'ok: o conector largou o notificador' '$work/host-run.txt'"
  compare_with_linux "[$twin-bit] C++ host" "$data"
  run_windows "$windows_host" "$wdata" reset >/dev/null || true
  check "[$twin-bit] ResetData empties the log table" \
    test "$(sqlite3 "$data/backoffice.sqlite" 'SELECT COUNT(*) FROM Kitra2Log')" = 0

  # The script host: the back office the machine's setting names.
  local script_data="$work/script" script
  script="$(winpath "$top/tests/windows/connector-client.vbs")"
  new_back_office "$script_data"
  say "[$twin-bit] VBScript through cscript, late-bound"
  win reg add 'HKCU\Software\Kitra\BackOffice' /v DataFolder /t REG_SZ /d "$(winpath "$script_data")" /f >/dev/null 2>&1
  run_windows cscript //nologo "$script" run "$(winpath "$work/script-run.utf16")" \
    "$(winpath "$common/settings-utf16.xml")" >"$work/script-run.txt" || true
  iconv -f UTF-16 -t UTF-8 "$work/script-run.utf16" 2>/dev/null | tr -d '\r' >"$work/script-report.txt" || true
  check "[$twin-bit] the script ran to its end" test "$(tail -n 1 "$work/script-report.txt")" = fim
  grep -v '^estado: ' "$work/script-report.txt" >"$work/script-facts.txt" || true
  cat >"$work/script-expected.txt" <<EOT
ConnectorID: Quarn.Mercatill.Connector.Kitra
Description: Integrador KitranaII
Version: 1.00.00
FunctionalLevel: SQL09
HasUISetting: sim
HasUITrace: sim
Init: sim
Save: nao
HandleImportExport: nao
HandleReExport: nao
Signature: sim
LoadDefaults: sim
ValidateSettings: sim
NotifyProgress: sim
fim
EOT
  same_files "[$twin-bit] what the script was answered" "$work/script-expected.txt" "$work/script-facts.txt"
  "$host" --data "$script_data" settings show --reveal | mask_moments >"$work/script-settings.xml"
  mask_moments <"$common/linux-settings-after.xml" >"$work/linux-settings-after.xml"
  same_files "[$twin-bit] the settings the script stored (with their accents) are the Linux run's" \
    "$work/linux-settings-after.xml" "$work/script-settings.xml"
  check "[$twin-bit] the end of the run reached the script's console: A importação chegou ao fim." \
    grep -q 'A importação chegou ao fim\.$' "$work/script-run.txt"
  grep '^estado: ' "$work/script-report.txt" >"$work/script-statuses.txt" || true
  grep '^estado: ' "$work/host-run.txt" >"$work/host-statuses.txt" || true
  check "[$twin-bit] the script's notifier was told statuses" test -s "$work/script-statuses.txt"
  same_files "[$twin-bit] the statuses the C++ host was told are the Linux run's" \
    "$common/linux-statuses.txt" "$work/host-statuses.txt"
  same_files "[$twin-bit] the statuses the script was told are the Linux run's" \
    "$common/linux-statuses.txt" "$work/script-statuses.txt"
  compare_with_linux "[$twin-bit] VBScript" "$script_data"
  run_windows cscript //nologo "$script" rerun "$(winpath "$work/script-rerun.utf16")" >"$work/script-rerun.txt" || true
  iconv -f UTF-16 -t UTF-8 "$work/script-rerun.utf16" 2>/dev/null | tr -d '\r' >"$work/script-rerun-report.txt" || true
  check "[$twin-bit] a notifier that fails, and lacks NotifyProgress, does not end the run" \
    bash -c "test \"\$(tr '\n' ' ' <'$work/script-rerun-report.txt')\" = 'NotifyStatus after its failure: sim fim ' &&
             grep -q 'A importação chegou ao fim\.\$' '$work/script-rerun.txt'"
  run_windows cscript //nologo "$script" reset "$(winpath "$work/script-reset.utf16")" >/dev/null || true
  iconv -f UTF-16 -t UTF-8 "$work/script-reset.utf16" 2>/dev/null | tr -d '\r' >"$work/script-reset.txt" || true
  check "[$twin-bit] the script's ResetData and Delete ran" \
    test "$(tr '\n' ' ' <"$work/script-reset.txt")" = "Delete: sim fim "
  check "[$twin-bit] ResetData emptied the log table" \
    test "$(sqlite3 "$script_data/backoffice.sqlite" 'SELECT COUNT(*) FROM Kitra2Log')" = 0
  check "[$twin-bit] Delete took the settings away" \
    bash -c "! $(printf '%q' "$host") --data $(printf '%q' "$script_data") settings show >/dev/null 2>&1"
  win reg delete 'HKCU\Software\Kitra' /f >/dev/null 2>&1 || true

  say "[$twin-bit] regsvr32 /u"
  check "[$twin-bit] regsvr32 /u unregisters the connector" win regsvr32 /s /u "$connector_module"
  check "[$twin-bit] regsvr32 /u unregisters the back office" win regsvr32 /s /u "$backoffice_module"
  check "[$twin-bit] no key of the class is left" no_key "HKCR\\CLSID\\$clsid"
  check "[$twin-bit] no key of the ProgID is left" no_key "HKCR\\$progid"
  check "[$twin-bit] no key of the type library is left" no_key "HKCR\\TypeLib\\$libid"
  check "[$twin-bit] no key of the interface is left" no_key "HKCR\\Interface\\$iid"
  check "[$twin-bit] no key of the back office's class is left" no_key "HKCR\\CLSID\\$backoffice_clsid"
  check "[$twin-bit] no key of the back office's ProgID is left" no_key "HKCR\\$backoffice_progid"
  stop_wine
}

for entry in "${twins[@]}"; do
  twin="${entry%%=*}" twin_build="${entry#*=}"
  suite
done
echo "Windows: $passed passed, $failed failed"
[ "$failed" -eq 0 ]
