#!/bin/bash
# kitra-bench's verdict and its refusals, run as ./kitra bench runs it.
# usage: bench_program.sh KITRA_BENCH
set -uo pipefail
bench="$1"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
failures=0
fail() { echo "FAILED: $*" >&2; failures=$((failures + 1)); }

# Two factors as the bench writes them. Each factor's "import" row is the fastest run; the rows
# of each run are there too and must not count.
cat >"$scratch/met.csv" <<'CSV'
factor,part,statements,rows,seconds,peak_rss_mb
0.25,"import: Transacções",45001,22500,9.500,0.0
0.25,"import",45008,130125,10.000,54.0
0.25,"import run 1",45008,130125,10.000,0.0
0.25,"import run 2",45008,130125,30.000,0.0
0.25,"fetch floor",45008,130125,20.000,0.0
0.25,"write floor",1,276841,1.000,0.0
1,"import",180008,515003,42.000,91.0
1,"import run 1",180008,515003,42.000,0.0
1,"import run 2",180008,515003,99.000,0.0
1,"fetch floor",180008,515003,80.000,0.0
1,"write floor",1,1081055,5.000,0.0
CSV
out="$("$bench" summary --csv "$scratch/met.csv")"; status=$?
[ "$status" -eq 0 ] || fail "goals met: exit $status"
expected="import 42.0 s = 0.49 × floor (fetch 80.0 s + write 5.0 s); peak RSS 91 MB; 4× data → 4.2× time"
grep -qxF "$expected" <<<"$out" || fail "goals met: verdict line: $out"
grep -q ": met$" <<<"$out" || fail "goals met: no 'met': $out"

# Growth beyond 4.4 times for 4 times the data fails, whatever the other goals.
sed 's/^1,"import",180008,515003,42.000/1,"import",180008,515003,45.000/' "$scratch/met.csv" >"$scratch/slow.csv"
out="$("$bench" summary --csv "$scratch/slow.csv")"; status=$?
[ "$status" -eq 1 ] || fail "growth missed: exit $status"
grep -qF "4× data → 4.5× time" <<<"$out" || fail "growth missed: verdict: $out"
grep -q ": missed$" <<<"$out" || fail "growth missed: no 'missed': $out"

# Peak memory beyond 300 MB fails.
sed 's/^1,"import",180008,515003,42.000,91.0/1,"import",180008,515003,42.000,301.0/' "$scratch/met.csv" >"$scratch/big.csv"
"$bench" summary --csv "$scratch/big.csv" >/dev/null; status=$?
[ "$status" -eq 1 ] || fail "memory missed: exit $status"

# With the restaurants' transaction headers counted, the peak memory is set against them: how much
# it grows per 100,000 headers between the two factors, and where that reaches at factor 10.
sed 's/^1,"import",180008,515003,42.000,91.0/1,"import",180008,515003,42.000,60.0/' "$scratch/met.csv" >"$scratch/headers.csv"
printf '%s\n' '0.25,"transaction headers",0,25000,0.000,0.0' '1,"transaction headers",0,100000,0.000,0.0' >>"$scratch/headers.csv"
out="$("$bench" summary --csv "$scratch/headers.csv")"; status=$?
[ "$status" -eq 0 ] || fail "memory growth met: exit $status"
expected="peak RSS 54 MB at factor 0.25 (25000 headers), 60 MB at factor 1 (100000 headers): 8.0 MB per 100,000 headers; at factor 10 (1000000 headers) 132 MB"
grep -qxF "$expected" <<<"$out" || fail "memory growth met: growth line: $out"
grep -qF "peak RSS ≤ 300 MB (also at factor 10)" <<<"$out" || fail "memory growth met: goals: $out"
grep -q ": met$" <<<"$out" || fail "memory growth met: no 'met': $out"

# A peak within 300 MB now that would pass 300 MB at factor 10 fails.
printf '%s\n' '0.25,"transaction headers",0,25000,0.000,0.0' '1,"transaction headers",0,100000,0.000,0.0' >"$scratch/counts.csv"
cat "$scratch/met.csv" "$scratch/counts.csv" >"$scratch/growing.csv"
out="$("$bench" summary --csv "$scratch/growing.csv")"; status=$?
[ "$status" -eq 1 ] || fail "memory growth missed: exit $status"
grep -qF "49.3 MB per 100,000 headers; at factor 10 (1000000 headers) 535 MB" <<<"$out" ||
  fail "memory growth missed: growth line: $out"
grep -q ": missed$" <<<"$out" || fail "memory growth missed: no 'missed': $out"

# The number of runs is checked before anything runs.
for runs in 0 21 x 2x; do
  err="$("$bench" import --host-program /bin/false --data "$scratch/none" --factor 1 \
    --csv "$scratch/out.csv" --server 127.0.0.1 --port 1 --database d --user u --password p \
    --runs "$runs" 2>&1 >/dev/null)"; status=$?
  [ "$status" -eq 2 ] || fail "--runs $runs: exit $status"
  grep -qF -- "--runs must be a whole number from 1 to 20, not $runs" <<<"$err" ||
    fail "--runs $runs: message: $err"
done
[ ! -e "$scratch/out.csv" ] || fail "a refused --runs wrote the CSV"

# Runs in turns: each run of the larger factor is set against the mean of the smaller factor's
# runs on either side of it, wall time and processor time alike.
cat >"$scratch/turns.csv" <<'CSV'
factor,part,statements,rows,seconds,peak_rss_mb
1,"turn 1",0,0,40.000,55.0
1,"turn 1 cpu",0,0,60.000,0.0
10,"turn 2",0,0,420.000,170.0
10,"turn 2 cpu",0,0,590.000,0.0
1,"turn 3",0,0,44.000,55.0
1,"turn 3 cpu",0,0,58.000,0.0
10,"turn 4",0,0,400.000,170.0
10,"turn 4 cpu",0,0,600.000,0.0
1,"turn 5",0,0,36.000,55.0
1,"turn 5 cpu",0,0,62.000,0.0
CSV
out="$("$bench" summary --csv "$scratch/turns.csv")"; status=$?
[ "$status" -eq 0 ] || fail "turns met: exit $status: $out"
grep -qxF "  turn 2: 420.0 s = 10.00 × 42.0 s (turns 1 and 3); processor time 590.0 s = 10.00 × 59.0 s" <<<"$out" ||
  fail "turns met: turn 2: $out"
grep -qxF "  turn 4: 400.0 s = 10.00 × 40.0 s (turns 3 and 5); processor time 600.0 s = 10.00 × 60.0 s" <<<"$out" ||
  fail "turns met: turn 4: $out"
grep -qxF "factor 10 in 10.00× the time of factor 1 (10.00× the processor time of the import and the server); goal ≤ 10.50×: met" <<<"$out" ||
  fail "turns met: verdict: $out"

# One larger run well above the goal takes the mean of the ratios above it.
sed 's/^10,"turn 4",0,0,400.000/10,"turn 4",0,0,468.000/' "$scratch/turns.csv" >"$scratch/turns-slow.csv"
out="$("$bench" summary --csv "$scratch/turns-slow.csv")"; status=$?
[ "$status" -eq 1 ] || fail "turns missed: exit $status: $out"
grep -qF "factor 10 in 10.85× the time of factor 1" <<<"$out" || fail "turns missed: ratio: $out"
grep -q ": missed$" <<<"$out" || fail "turns missed: no 'missed': $out"

# Runs in turns of one factor only say so.
grep -v '^10,' "$scratch/turns.csv" >"$scratch/turns-one.csv"
err="$("$bench" summary --csv "$scratch/turns-one.csv" 2>&1 >/dev/null)"; status=$?
[ "$status" -eq 2 ] || fail "turns of one factor: exit $status"
grep -qF "the runs in turns are all of one factor" <<<"$err" || fail "turns of one factor: message: $err"

# The turns themselves, with a stand-in for kitra-host that notes which back office it was given
# and refuses one a run before it has already used: the factors alternate, the smaller first and
# last, and every run starts from its back office as it was.
cat >"$scratch/host" <<'HOST'
#!/bin/bash
data="$2"
[ ! -e "$data/used" ] || { echo "not fresh: $data" >&2; exit 3; }
touch "$data/used"
echo "$data" >>"$(dirname "$data")/order"
echo "A importar Transacções"
HOST
chmod +x "$scratch/host"
mkdir -p "$scratch/turns/small" "$scratch/turns/large"
"$bench" turns --host-program "$scratch/host" --csv "$scratch/turns/out.csv" \
  --small-data "$scratch/turns/small" --small-factor 1 --large-data "$scratch/turns/large" \
  --large-factor 10 --turns 2 --server-pid $$ >"$scratch/turns/stdout"; status=$?
[ "$status" -eq 0 ] || fail "turns run: exit $status: $(cat "$scratch/turns/stdout")"
order="$(sed "s|$scratch/turns/||" "$scratch/turns/order" | tr '\n' ' ')"
[ "$order" = "small large small large small " ] || fail "turns run: order: $order"
[ "$(grep -c '^1,"turn [135]",' "$scratch/turns/out.csv")" -eq 3 ] || fail "turns run: CSV: $(cat "$scratch/turns/out.csv")"
[ "$(grep -c '^10,"turn [24]",' "$scratch/turns/out.csv")" -eq 2 ] || fail "turns run: CSV: $(cat "$scratch/turns/out.csv")"
grep -qF "turn 5 of 5: factor 1: " "$scratch/turns/stdout" || fail "turns run: output: $(cat "$scratch/turns/stdout")"
grep -qF " + server " "$scratch/turns/stdout" || fail "turns run: no server time: $(cat "$scratch/turns/stdout")"
[ ! -e "$scratch/turns/small.before-run" ] || fail "turns run: the fresh copy was left behind"

# A run that fails ends the turns with the failure.
sed -i 's/^echo "A importar/[ "$(basename "$data")" = large ] \&\& exit 4\necho "A importar/' "$scratch/host"
rm -f "$scratch/turns/small/used" "$scratch/turns/large/used"
"$bench" turns --host-program "$scratch/host" --csv "$scratch/turns/out2.csv" \
  --small-data "$scratch/turns/small" --small-factor 1 --large-data "$scratch/turns/large" \
  --large-factor 10 >/dev/null 2>"$scratch/turns/stderr"; status=$?
[ "$status" -eq 1 ] || fail "turns with a failing run: exit $status"
grep -qF "exit code 4" "$scratch/turns/stderr" || fail "turns with a failing run: $(cat "$scratch/turns/stderr")"

for turns in 0 11 x; do
  err="$("$bench" turns --host-program "$scratch/host" --csv "$scratch/turns/out3.csv" \
    --small-data "$scratch/turns/small" --small-factor 1 --large-data "$scratch/turns/large" \
    --large-factor 10 --turns "$turns" 2>&1 >/dev/null)"; status=$?
  [ "$status" -eq 2 ] || fail "--turns $turns: exit $status"
  grep -qF -- "--turns must be a whole number from 1 to 10, not $turns" <<<"$err" || fail "--turns $turns: $err"
done

[ "$failures" -eq 0 ] && echo "kitra-bench: all checks passed"
exit $((failures > 0))
