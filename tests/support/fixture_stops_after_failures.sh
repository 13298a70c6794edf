#!/usr/bin/env bash
# Runs a small ctest project that uses the private-server fixture with one failing and one
# timed-out test, and checks that the fixture still took its server down.
#   fixture_stops_after_failures.sh MariaDbFixture.cmake WORKDIR
set -euo pipefail
module="$1"
work="$2"
script="$(cd "$(dirname "$module")/../../tools" && pwd)/mariadb"
rm -rf "$work"
mkdir -p "$work/src"
server="$work/server"

cat >"$work/src/CMakeLists.txt" <<CMAKE
cmake_minimum_required(VERSION 3.25)
project(FixtureScenario LANGUAGES NONE)
enable_testing()
include("$module")
kitra_add_mariadb_fixture(scenario "$server")
# Fails exactly when the server runs, which proves the fixture started it first.
add_test(NAME failing COMMAND sh -c "\"$script\" status \"$server\" >/dev/null && exit 1; exit 0")
set_tests_properties(failing PROPERTIES FIXTURES_REQUIRED scenario)
add_test(NAME timing_out COMMAND sleep 30)
set_tests_properties(timing_out PROPERTIES FIXTURES_REQUIRED scenario TIMEOUT 2)
CMAKE

cmake -S "$work/src" -B "$work/build" >/dev/null
rc=0
ctest --test-dir "$work/build" --output-on-failure >"$work/ctest.log" 2>&1 || rc=$?
cat "$work/ctest.log"

fail() { echo "FAIL: $*" >&2; "$script" stop "$server" >/dev/null 2>&1 || true; exit 1; }
[ "$rc" -ne 0 ] || fail "the scenario's failing tests passed"
grep -q "scenario_start .*Passed" "$work/ctest.log" || fail "the fixture did not start its server"
grep -q "failing .*Failed" "$work/ctest.log" || fail "the failing test did not run while the server ran"
grep -q "scenario_stop .*Passed" "$work/ctest.log" || fail "the fixture's stop did not run"
if "$script" status "$server"; then fail "the server still runs after the failed tests"; fi
echo "the fixture stopped its server after failing and timed-out tests"
