#!/usr/bin/env bash
# The demo as a new user runs it, in a folder of its own:
# - `./kitra demo --keep-server` leaves the restaurants' server running, and the `check` it
#   suggests then works; the stop command it prints stops the server;
# - a plain `./kitra demo` says that it stopped the server, and the start command it prints brings
#   it back on the port the settings name;
# - every line of the README's report excerpts is a line the demo's back office prints;
# - every section of `report sales` and `report cash` adds up to the report's totals, and each row
#   is what the back office's own tables give by direct SQL;
# - a sale of an item sold by weight that the back office lacks keeps the restaurant's value, and
#   the lines of `report sales` are worth what the restaurants' lines are, by direct SQL on both.
# Arguments: the project's top folder, the build folder.
set -uo pipefail

top="$1"
build="$2"
host="$build/backoffice/kitra-host"
work="$(mktemp -d /tmp/kitra-demo-test.XXXXXX)"
demo="$work/demo"
data="$demo/backoffice"
database="$data/backoffice.sqlite"
failures=0

cleanup() {
  "$top/tools/mariadb" stop "$demo/mariadb" >/dev/null 2>&1 || true
  rm -rf "$work"
}
trap cleanup EXIT

fail() {
  echo "FAILED: $*" >&2
  failures=$((failures + 1))
}

run_demo() {
  KITRA_BUILD_DIR="$build" KITRA_DEMO_DIR="$demo" "$top/kitra" demo "$@" >"$work/demo.txt" 2>&1
}

# The line of the demo's output that follows the given one.
line_after() {
  awk -v start="$1" 'found { sub(/^ +/, ""); print; exit } index($0, start) { found = 1 }' "$work/demo.txt"
}

sql() { sqlite3 -batch -noheader "$database" "$1"; }

# A number as the reports print it.
money() { awk '{ v = sprintf("%.2f", $1); if (v == "-0.00") v = "0.00"; sub(/\./, ",", v); print v }'; }

# --- --keep-server: the server stays, the suggested check works, the printed stop stops it.
if ! run_demo --keep-server; then
  cat "$work/demo.txt" >&2
  echo "FAILED: ./kitra demo --keep-server" >&2
  exit 1
fi
grep -q "The restaurants' server is still running" "$work/demo.txt" || fail "--keep-server does not say the server runs"
"$host" --data "$data" check >"$work/check.txt" 2>&1 || { cat "$work/check.txt" >&2; fail "check after --keep-server"; }

# --- The README's excerpts are lines the demo prints.
"$host" --data "$data" report sales >"$work/sales.txt" || fail "report sales"
"$host" --data "$data" report cash >"$work/cash.txt" || fail "report cash"
"$host" --data "$data" report account 4 >"$work/account.txt" || fail "report account 4"
# The code block that follows the README line holding the given text.
excerpt() {
  awk -v mark="$1" 'index($0, mark) { armed = 1; next }
                    armed && /^```/ { if (inside) exit; inside = 1; next }
                    inside { print }' "$top/README.md"
}
check_excerpt() {
  local mark="$1" output="$2" lines=0 line
  while IFS= read -r line; do
    [ "$line" = "..." ] && continue
    lines=$((lines + 1))
    grep -qxF -- "$line" "$output" || fail "README line after '$mark' is not printed by the demo: '$line'"
  done < <(excerpt "$mark")
  [ "$lines" -gt 3 ] || fail "no README excerpt after '$mark'"
}
check_excerpt 'After the demo, `kitra-host report sales`' "$work/sales.txt"
check_excerpt '`kitra-host report account 4` shows' "$work/account.txt"

# --- A line the back office would price otherwise keeps the restaurant's value: Centro sells
# 1,5 kg (1500 grams) of an item sold by weight at 10,00 the kilogram that the back office lacks
# (the item changed long before the last import, so no import brings it), for 15,00.
restaurant_sql() { "$top/tools/mariadb" client "$demo/mariadb" -N -B -e "$2" "$1"; }
sleep 1  # the new sale changes after the second in which the demo's run ended
restaurant_sql demo_centro "
  INSERT INTO plus (UID, ItemID, Description, ShortDescription1, BarCode, SubFamilyID, PropertyUID,
                    StockManagement, RecordDeleted, CreateDate, ModifyDate)
    SELECT 900001, '900001', 'Polvo ao peso', 'Polvo', NULL, MIN(s.uid),
           (SELECT MIN(UID) FROM properties WHERE ReadQuantityFromScale = 1), 0, 0,
           '2000-01-01 00:00:00', '2000-01-01 00:00:00' FROM subfamilies s;
  SET @h = (SELECT MAX(UID) + 1 FROM transactionsheaders);
  INSERT INTO transactionsheaders (UID, DocumentTypeUID, DocumentID, CreateSalesmanUID, CustomerUID,
                                   TransactionStatus, TransactionStartTerminalUID, TableTotal,
                                   CreateDate, ModifyDate)
    SELECT @h, 17, 'FT9000001', MIN(uid), 1, 'N', 1, 1500, '2025-01-15 13:00:00', NOW() FROM salesmans;
  INSERT INTO transactionsdetails (TransactionUID, PluUid, PluName, Quantity, PluUnitPrice,
                                   DiscountPercentage, DiscountValue, SaleValue, SaleTaxUID,
                                   SalesmanUID, Waste)
    SELECT @h, 900001, 'Polvo ao peso', 1500, 1000, 0, 0, 1500,
           (SELECT MIN(uid) FROM taxes), CreateSalesmanUID, 0 FROM transactionsheaders WHERE UID = @h;
  INSERT INTO transactionstenders (TransactionUID, PaymentTypeUID, PaymentType, value)
    SELECT @h, MIN(uid), 'Dinheiro', 1500 FROM paymenttypes WHERE code = '1';" ||
  fail "adding the weighed sale to Centro"
"$host" --data "$data" execute >"$work/execute.txt" 2>&1 || { cat "$work/execute.txt" >&2; fail "execute after the weighed sale"; }
[ "$(sql "SELECT Quantity || ' ' || TotalWithTax FROM document_lines WHERE ItemID = 'C900001'")" = "1500.0 15.0" ] ||
  fail "the weighed line: $(sql "SELECT Quantity, TotalWithTax, TaxValue FROM document_lines WHERE ItemID = 'C900001'")"
"$host" --data "$data" report sales >"$work/sales.txt" || fail "report sales"
# The lines of the report's sales are the restaurants' lines as the import selects them (items and
# tax rates the restaurant still has; documents of the mapped sale types, not refunded): what they
# sold them for, not what the back office would price them at.
restaurant_lines=0
for restaurant in demo_centro demo_praia; do
  cents=$(restaurant_sql "$restaurant" "
    SELECT COALESCE(SUM(td.SaleValue), 0) FROM transactionsheaders th
      JOIN transactionsdetails td ON td.TransactionUID = th.UID
      INNER JOIN taxes tx ON tx.uid = td.SaleTaxUID INNER JOIN plus pl ON td.PluUid = pl.UID
    WHERE th.DocumentTypeUID IN (17, 11) AND th.TransactionStatus = 'N'") || fail "the lines of $restaurant"
  restaurant_lines=$((restaurant_lines + cents))
done
expected=$(echo "$restaurant_lines" | awk '{ v = sprintf("%.2f", $1 / 100); sub(/\./, ",", v); print v }')
got=$(awk 'index($0, "Vendas por dia") == 1 { inside = 1 } inside && /^Total / {
        n = $3; t = $4; gsub(",", ".", n); gsub(",", ".", t); v = sprintf("%.2f", n + t); sub(/\./, ",", v); print v; exit }' "$work/sales.txt")
[ "$got" = "$expected" ] || fail "the sales' lines (without VAT + VAT) in report sales: $got; the restaurants' lines: $expected"

# --- Every section of the reports against direct SQL.
sales_kinds="Kind IN (1, 2, 3)"
signed() { echo "CASE d.Kind WHEN 3 THEN -($1) ELSE $1 END"; }
# The rows of the section whose title starts with the given text, up to the blank line.
section() {
  awk -v title="$2" 'index($0, title) == 1 { inside = 1; getline; next } inside && /^$/ { exit } inside { print }' "$1"
}
check_sales() {
  local report="$1" from="$2" to="$3" period="d.DocumentDate BETWEEN '$2' AND '$3'"
  local total expected got
  total=$(sql "SELECT COALESCE(SUM($(signed d.Total)), 0) FROM documents d WHERE d.State = 0 AND d.$sales_kinds AND $period" | money)
  # Days: each day and the total.
  got=$(section "$report" "Vendas por dia" | awk '{ print $1, $2, $NF }')
  expected=$(sql "SELECT substr(d.DocumentDate, 1, 10), COUNT(*), SUM($(signed d.Total)) FROM documents d
                  WHERE d.State = 0 AND d.$sales_kinds AND $period GROUP BY 1 ORDER BY 1" |
             awk -F'|' '{ v = sprintf("%.2f", $3); sub(/\./, ",", v); print $1, $2, v }')
  expected+=$'\n'"Total $(sql "SELECT COUNT(*) FROM documents d WHERE d.State = 0 AND d.$sales_kinds AND $period") $total"
  [ "$got" = "$expected" ] || fail "day table of $report differs from SQL:"$'\n'"$got"$'\n'"expected:"$'\n'"$expected"
  # Types: each type's documents and total, and the total line.
  got=$(section "$report" "Por tipo de documento" | awk '{ n = NF; print $1, $(n-3), $(n-2) }')
  expected=$(sql "SELECT d.DocumentTypeID, SUM(d.State = 0), SUM(CASE WHEN d.State = 0 THEN $(signed d.Total) ELSE 0 END)
                  FROM documents d WHERE d.$sales_kinds AND $period GROUP BY 1 ORDER BY 1" |
             awk -F'|' '{ v = sprintf("%.2f", $3); if (v == "-0.00") v = "0.00"; sub(/\./, ",", v); print $1, $2, v }')
  expected+=$'\n'"Total $(sql "SELECT COUNT(*) FROM documents d WHERE d.State = 0 AND d.$sales_kinds AND $period") $total"
  [ "$got" = "$expected" ] || fail "type table of $report differs from SQL:"$'\n'"$got"$'\n'"expected:"$'\n'"$expected"
  # Tenders: each tender, the credit, the difference, and a total that they add up to.
  got=$(section "$report" "Por modalidade de pagamento" | grep -E '^ +[0-9]+  ' | awk '{ print $1, $(NF-1), $NF }')
  expected=$(sql "SELECT p.TenderID, COUNT(DISTINCT p.DocumentKey), SUM($(signed p.Amount)) FROM document_payments p
                  JOIN documents d ON d.DocumentKey = p.DocumentKey WHERE d.State = 0 AND d.$sales_kinds AND $period
                  GROUP BY 1 ORDER BY 1" |
             awk -F'|' '{ v = sprintf("%.2f", $3); if (v == "-0.00") v = "0.00"; sub(/\./, ",", v); print $1, $2, v }')
  [ "$got" = "$expected" ] || fail "tender rows of $report differ from SQL:"$'\n'"$got"$'\n'"expected:"$'\n'"$expected"
  got=$(section "$report" "Por modalidade de pagamento" | grep 'A crédito (conta corrente)' | awk '{ print $(NF-3) }')
  expected=$(sql "SELECT COALESCE(SUM($(signed a.Amount)), 0) FROM account_entries a JOIN documents d ON d.DocumentKey = a.DocumentKey
                  WHERE a.EntryType = 'D' AND d.State = 0 AND d.$sales_kinds AND $period" | money)
  [ "$got" = "$expected" ] || fail "credit row of $report: $got, SQL: $expected"
  got=$(section "$report" "Por modalidade de pagamento" | awk '/^ +Total  / { print $NF }')
  [ "$got" = "$total" ] || fail "tender total of $report: $got, sales total: $total"
  # The rows add up to the total.
  got=$(section "$report" "Por modalidade de pagamento" | awk '
          /^ +[0-9]+  / { sum += tr($NF) } /A crédito/ { sum += tr($(NF-3)) } /Diferença/ { sum += tr($NF) }
          function tr(v) { gsub(",", ".", v); return v + 0 }
          END { v = sprintf("%.2f", sum); if (v == "-0.00") v = "0.00"; sub(/\./, ",", v); print v }')
  [ "$got" = "$total" ] || fail "the tender rows of $report add up to $got, not $total"
}
check_sales "$work/sales.txt" "0000-01-01 00:00:00" "9999-12-31 23:59:59"
"$host" --data "$data" report sales --from 2025-01-10 --to 2025-01-20 >"$work/period.txt" || fail "report sales with a period"
check_sales "$work/period.txt" "2025-01-10 00:00:00" "2025-01-20 23:59:59"

check_cash() {
  local report="$1" got expected totals
  totals=$(sql "SELECT COUNT(*), SUM(CASE WHEN m.Amount > 0 THEN m.Amount ELSE 0 END), SUM(CASE WHEN m.Amount < 0 THEN -m.Amount ELSE 0 END), SUM(m.Amount)
                FROM cash_movements m JOIN documents d ON d.DocumentKey = m.DocumentKey WHERE d.State = 0")
  got=$(section "$report" "Movimentos de caixa por tipo" | awk '{ print $1, $(NF-2), $(NF-1), $NF }')
  expected=$(sql "SELECT d.DocumentTypeID, COUNT(*), SUM(CASE WHEN m.Amount > 0 THEN m.Amount ELSE 0 END), SUM(CASE WHEN m.Amount < 0 THEN -m.Amount ELSE 0 END)
                  FROM cash_movements m JOIN documents d ON d.DocumentKey = m.DocumentKey WHERE d.State = 0 GROUP BY 1 ORDER BY 1" |
             awk -F'|' '{ a = sprintf("%.2f", $3); b = sprintf("%.2f", $4); sub(/\./, ",", a); sub(/\./, ",", b); print $1, $2, a, b }')
  expected+=$'\n'$(echo "$totals" | awk -F'|' '{ a = sprintf("%.2f", $2); b = sprintf("%.2f", $3); sub(/\./, ",", a); sub(/\./, ",", b); print "Total", $1, a, b }')
  [ "$got" = "$expected" ] || fail "cash types differ from SQL:"$'\n'"$got"$'\n'"expected:"$'\n'"$expected"
  got=$(section "$report" "Por posto (gaveta)" | awk '/^ *Total  / { print $(NF-2), $(NF-1), $NF }')
  expected=$(echo "$totals" | awk -F'|' '{ a = sprintf("%.2f", $2); b = sprintf("%.2f", $3); c = sprintf("%.2f", $4); sub(/\./, ",", a); sub(/\./, ",", b); sub(/\./, ",", c); print a, b, c }')
  [ "$got" = "$expected" ] || fail "drawer total: $got, SQL: $expected"
}
check_cash "$work/cash.txt"
grep -q '^Período: todo o período$' "$work/sales.txt" || fail "a report without dates does not say 'todo o período'"

# --- The printed stop command stops the server; a plain demo says it stopped it, and its start
# command brings it back for check.
stop_command="$(line_after "Stop it with:")"
eval "$stop_command" >/dev/null || fail "the printed stop command: $stop_command"
"$top/tools/mariadb" status "$demo/mariadb" >/dev/null && fail "the server still runs after the printed stop command"
if ! run_demo; then
  cat "$work/demo.txt" >&2
  fail "./kitra demo (a second time)"
fi
grep -q "The demo has stopped the restaurants' server" "$work/demo.txt" || fail "the demo does not say it stopped the server"
"$host" --data "$data" check >/dev/null 2>&1 && fail "check reached a server the demo says it stopped"
start_command="$(line_after "Start it on the port the settings name with:")"
eval "$start_command" >/dev/null || fail "the printed start command: $start_command"
"$host" --data "$data" check >"$work/check.txt" 2>&1 || { cat "$work/check.txt" >&2; fail "check after the printed start command"; }

[ "$failures" -eq 0 ] && echo "the demo, its reports and the README agree"
exit "$((failures > 0))"
