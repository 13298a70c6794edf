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

[ "$failures" -eq 0 ] && echo "kitra-bench: all checks passed"
exit $((failures > 0))
