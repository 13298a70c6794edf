# The private MariaDB server as a ctest fixture. kitra_add_mariadb_fixture(NAME DIR) adds the
# tests NAME_start (FIXTURES_SETUP NAME: a fresh server in DIR, before the first test that
# requires NAME) and NAME_stop (FIXTURES_CLEANUP NAME: after the last of them, whether they
# passed or not), so one server serves a whole run and none outlives it.
set(KITRA_MARIADB_SCRIPT "${CMAKE_CURRENT_LIST_DIR}/../../tools/mariadb")
cmake_path(NORMAL_PATH KITRA_MARIADB_SCRIPT)

function(kitra_add_mariadb_fixture name dir)
  add_test(NAME ${name}_start COMMAND "${KITRA_MARIADB_SCRIPT}" start --fresh "${dir}")
  set_tests_properties(${name}_start PROPERTIES FIXTURES_SETUP ${name} TIMEOUT 180)
  add_test(NAME ${name}_stop COMMAND "${KITRA_MARIADB_SCRIPT}" stop "${dir}")
  set_tests_properties(${name}_stop PROPERTIES FIXTURES_CLEANUP ${name} TIMEOUT 180)
endfunction()
