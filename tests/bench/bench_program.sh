#!/bin/bash
# kitra-bench's verdict and its refusals, run as ./kitra bench runs it.
# usage: bench_program.sh KITRA_BENCH
set -uo pipefail
bench="$1"
scratch="$(mktemp -d)"
trap 'rm -rf "$scratch"' EXIT
failures=0
fail() { echo "FAILED: $*" >&2; failures=$((failures + 1)); }

# One factor as `kitra-bench import` writes it: three alternating runs of the fetch floor, the
# import and the write floor (wall, client and server processor time), the sequential fetch,
# the re-import, the counts on both sides and the headers.
# factor_rows FACTOR IMPORT1 IMPORT2 IMPORT3 FETCH1 FETCH2 FETCH3 WRITE IMPORT_CPU FETCH_CPU
#             WRITE_CPU REIMPORT RSS HEADERS
factor_rows() {
  local f=$1 i1=$2 i2=$3 i3=$4 f1=$5 f2=$6 f3=$7 w=$8 ic=$9 fc=${10} wc=${11} re=${12} rss=${13} h=${14}
  local docs=$((h * 9 / 10)) run kind
  local imports=("$i1" "$i2" "$i3") fetches=("$f1" "$f2" "$f3")
  echo "$f,\"import: Transacções\",0,$docs,$i1,0.0"
  for kind in documents lines payments "cash movements" receipts; do
    echo "$f,\"restaurant count: $kind\",0,$((${#kind} * h)),0.000,0.0"
  done
  for run in 1 2 3; do
    echo "$f,\"fetch run $run\",1000,5000,${fetches[$((run - 1))]},0.0"
    echo "$f,\"fetch run $run cpu\",0,0,$fc,0.0"
    echo "$f,\"fetch run $run server cpu\",0,0,20.000,0.0"
    echo "$f,\"import run $run\",0,$docs,${imports[$((run - 1))]},$rss"
    echo "$f,\"import run $run cpu\",0,0,$ic,0.0"
    echo "$f,\"import run $run server cpu\",0,0,21.000,0.0"
    for kind in documents lines payments "cash movements" receipts; do
      echo "$f,\"import run $run count: $kind\",0,$((${#kind} * h)),0.000,0.0"
    done
    echo "$f,\"write run $run\",1,9000,$w,0.0"
    echo "$f,\"write run $run cpu\",0,0,$wc,0.0"
  done
  echo "$f,\"sequential fetch\",0,0,99.000,0.0"
  echo "$f,\"reimport\",0,$docs,$re,$rss"
  echo "$f,\"reimport cpu\",0,0,$ic,0.0"
  for kind in documents lines payments "cash movements" receipts; do
    echo "$f,\"reimport count: $kind\",0,$((${#kind} * h)),0.000,0.0"
  done
  echo "$f,\"transaction headers\",0,$h,0.000,0.0"
  echo "$f,\"imported headers\",0,$docs,0.000,0.0"
}
header="factor,part,statements,rows,seconds,peak_rss_mb"
{
  echo "$header"
  factor_rows 0.25 10.000 11.000 30.000 10.000 10.500 9.000 1.000 7.000 5.000 1.000 15.000 54.0 25000
  factor_rows 1 41.000 42.000 99.000 38.000 37.000 39.000 5.000 30.000 20.000 4.000 60.000 60.0 100000
} >"$scratch/met.csv"

# Every goal met: each figure is the median of its runs (an outlier run does not move it), the
# floor is the larger of the fetch and the write, and fetch + write stands beside it.
out="$("$bench" summary --csv "$scratch/met.csv")"; status=$?
[ "$status" -eq 0 ] || fail "goals met: exit $status: $out"
expected="factor 1: import 42.0 s (41.0 to 99.0 s, 3 runs) = 1.11 × floor 38.0 s = max(fetch 38.0 s (37.0 to 39.0 s, 3 runs), write 5.0 s (5.0 to 5.0 s, 3 runs)); fetch + write 43.0 s: 0.98 ×"
grep -qxF "$expected" <<<"$out" || fail "goals met: factor 1's line: $out"
expected="factor 1: processor time: import 30.0 s (0.333 s per 1,000 headers) against fetch 20.0 s + write 4.0 s: 1.25 ×; server 21.0 s in the import, 20.0 s in the fetch floor"
grep -qxF "$expected" <<<"$out" || fail "goals met: processor time: $out"
grep -qxF "factor 1: sequential fetch 99.0 s (the round trip's latency, not a floor)" <<<"$out" ||
  fail "goals met: sequential fetch: $out"
grep -qxF "factor 1: re-import after a full rewind 60.0 s (cpu 30.0 s) = 1.43 × the import" <<<"$out" ||
  fail "goals met: re-import: $out"
grep -qxF "factor 0.25: import 11.0 s (10.0 to 30.0 s, 3 runs) = 1.10 × floor 10.0 s = max(fetch 10.0 s (9.0 to 10.5 s, 3 runs), write 1.0 s (1.0 to 1.0 s, 3 runs)); fetch + write 11.0 s: 1.00 ×" <<<"$out" ||
  fail "goals met: factor 0.25's line: $out"
grep -qxF "4× data → 3.8× time" <<<"$out" || fail "goals met: growth: $out"
grep -qxF "peak RSS 54 MB at factor 0.25 (25000 headers), 60 MB at factor 1 (100000 headers): 8.0 MB per 100,000 headers; at factor 10 (1000000 headers) 132 MB" <<<"$out" ||
  fail "goals met: memory growth: $out"
grep -q ": met$" <<<"$out" || fail "goals met: no 'met': $out"

# missed NAME FILE REASON: the summary of FILE exits 1, says 'missed' and gives the reason.
missed() {
  local name="$1" file="$2" reason="$3" out status
  out="$("$bench" summary --csv "$file")"; status=$?
  [ "$status" -eq 1 ] || fail "$name: exit $status: $out"
  grep -q ": missed$" <<<"$out" || fail "$name: no 'missed': $out"
  grep -qxF "  $reason" <<<"$out" || fail "$name: reason '$reason' not given: $out"
}

# The import above 1.15 × its floor, at the smaller factor as well as at the larger.
sed 's/^1,"import run 2",0,90000,42.000/1,"import run 2",0,90000,44.000/' "$scratch/met.csv" >"$scratch/slow.csv"
missed "floor missed" "$scratch/slow.csv" "factor 1: import 1.16 × floor, goal ≤ 1.15"
sed 's/^0.25,"import run 2",0,22500,11.000/0.25,"import run 2",0,22500,12.000/' "$scratch/met.csv" >"$scratch/slow-small.csv"
missed "floor missed at the smaller factor" "$scratch/slow-small.csv" "factor 0.25: import 1.20 × floor, goal ≤ 1.15"

# The write floor is the floor when it is the larger.
sed 's/^1,"write run \([0-9]\)",1,9000,5.000/1,"write run \1",1,9000,40.000/' "$scratch/met.csv" >"$scratch/write.csv"
out="$("$bench" summary --csv "$scratch/write.csv")"
grep -qF "factor 1: import 42.0 s (41.0 to 99.0 s, 3 runs) = 1.05 × floor 40.0 s" <<<"$out" || fail "write floor: $out"

# A zero or missing floor fails, with the reason.
sed 's/^1,"fetch run \([0-9]\)",1000,5000,[0-9.]*/1,"fetch run \1",1000,5000,0.000/' "$scratch/met.csv" >"$scratch/zero.csv"
missed "zero fetch floor" "$scratch/zero.csv" "factor 1: the fetch floor is 0 s"
grep -v '^1,"fetch run [0-9]",' "$scratch/met.csv" >"$scratch/nofetch.csv"
missed "missing fetch floor" "$scratch/nofetch.csv" "factor 1: no fetch floor"
grep -v '^0.25,"write run [0-9]",' "$scratch/met.csv" >"$scratch/nowrite.csv"
missed "missing write floor" "$scratch/nowrite.csv" "factor 0.25: no write floor"
grep -v '^1,"import run [0-9]",' "$scratch/met.csv" >"$scratch/noimport.csv"
missed "missing import" "$scratch/noimport.csv" "factor 1: no import run"

# A missing header count fails: the peak memory cannot be set against it.
grep -v '^1,"transaction headers"' "$scratch/met.csv" >"$scratch/noheaders.csv"
missed "missing header count" "$scratch/noheaders.csv" "factor 1: no count of the restaurant's transaction headers"
grep -v '^0.25,"imported headers"' "$scratch/met.csv" >"$scratch/noimported.csv"
missed "missing imported headers" "$scratch/noimported.csv" "factor 0.25: no count of the headers the import read"

# Processor time beyond 1.3 × the floors' fails, even when the wall time meets its goal.
sed 's/^1,"import run \([0-9]\) cpu",0,0,30.000/1,"import run \1 cpu",0,0,32.000/' "$scratch/met.csv" >"$scratch/cpu.csv"
missed "processor time missed" "$scratch/cpu.csv" "factor 1: import's processor time 1.33 × its floors', goal ≤ 1.3"
grep -v '^1,"fetch run [0-9] cpu",' "$scratch/met.csv" >"$scratch/nocpu.csv"
missed "missing processor time" "$scratch/nocpu.csv" "factor 1: no processor time of the import or of its floors"

# An import that brought other counts than the restaurant holds fails, with the figures.
sed 's/^1,"import run 3 count: lines",0,500000/1,"import run 3 count: lines",0,499999/' "$scratch/met.csv" >"$scratch/counts.csv"
missed "count differs" "$scratch/counts.csv" "factor 1: import run 3: lines 499999 in the back office, 500000 in the restaurant"
sed 's/^0.25,"reimport count: receipts",0,200000/0.25,"reimport count: receipts",0,200002/' "$scratch/met.csv" >"$scratch/recounts.csv"
missed "re-import count differs" "$scratch/recounts.csv" "factor 0.25: reimport: receipts 200002 in the back office, 200000 in the restaurant"
grep -v '^1,"restaurant count: ' "$scratch/met.csv" >"$scratch/nocounts.csv"
missed "counts not checked" "$scratch/nocounts.csv" "factor 1: the import's counts were not checked against the restaurant's"

# A re-import beyond twice the import, or none, fails.
sed 's/^1,"reimport",0,90000,60.000/1,"reimport",0,90000,85.000/' "$scratch/met.csv" >"$scratch/reimport.csv"
missed "re-import missed" "$scratch/reimport.csv" "factor 1: re-import 2.02 × the import, goal ≤ 2"
grep -v '^0.25,"reimport",' "$scratch/met.csv" >"$scratch/noreimport.csv"
missed "missing re-import" "$scratch/noreimport.csv" "factor 0.25: no re-import after a full rewind"

# Growth beyond 4.4 times for 4 times the data fails, whatever the other goals.
sed 's/^0.25,"import run \([0-9]\)",0,22500,1[01].000/0.25,"import run \1",0,22500,9.000/; s/^0.25,"fetch run \([0-9]\)",1000,5000,[0-9.]*/0.25,"fetch run \1",1000,5000,8.500/' \
  "$scratch/met.csv" >"$scratch/growth.csv"
missed "growth missed" "$scratch/growth.csv" "4× data took 4.7× the time, goal ≤ 4.4×"

# Peak memory beyond 300 MB fails, and so does a projection to factor 10 beyond it.
sed 's/^1,"import run 2",0,90000,42.000,60.0/1,"import run 2",0,90000,42.000,301.0/' "$scratch/met.csv" >"$scratch/big.csv"
missed "memory missed" "$scratch/big.csv" "factor 1: peak RSS 301 MB, goal ≤ 300 MB"
sed 's/^1,"import run 1",0,90000,41.000,60.0/1,"import run 1",0,90000,41.000,91.0/' "$scratch/met.csv" >"$scratch/growing.csv"
missed "memory growth missed" "$scratch/growing.csv" "peak RSS at factor 10 535 MB, goal ≤ 300 MB"

# The number of runs is checked before anything runs.
for runs in 0 21 x 2x; do
  err="$("$bench" import --host-program /bin/false --data "$scratch/none" --factor 1 \
    --csv "$scratch/out.csv" --settings "$scratch/none.xml" --server 127.0.0.1 --port 1 --database d \
    --user u --password p --runs "$runs" 2>&1 >/dev/null)"; status=$?
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
