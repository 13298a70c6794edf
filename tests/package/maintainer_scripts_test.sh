#!/usr/bin/env bash
# The package's maintainer scripts as dpkg runs them: install, install again (an upgrade),
# remove and purge, on a machine without the ODBC driver name and on one that has it already.
# dpkg runs in a mount namespace of its own where /etc, /usr and /var are overlays over the
# machine's, so nothing of it reaches the machine itself. Skipped (exit 77) where the test may
# not make such a namespace.
#   maintainer_scripts_test.sh BUILD_DIR
set -euo pipefail
build="$1"

fail() { echo "FAILED: $*" >&2; exit 1; }
contains() { grep -qF -- "$2" <<<"$1" || fail "$3: '$2' not in:"$'\n'"$1"; }

if [ "${KITRA_PACKAGE_NAMESPACE:-}" != 1 ]; then
  [ "$(id -u)" -eq 0 ] || { echo "skipped: dpkg and the overlays need root"; exit 77; }
  unshare -m true 2>/dev/null || { echo "skipped: no mount namespace may be made here"; exit 77; }
  scratch="$(mktemp -d "${TMPDIR:-/tmp}/kitra-maintainer.XXXXXX")"
  trap 'rm -rf "$scratch"' EXIT
  cpack -G DEB --config "$build/CPackConfig.cmake" -B "$scratch/package" >"$scratch/cpack.log" 2>&1 ||
    { cat "$scratch/cpack.log" >&2; fail "cpack could not build the package"; }
  status=0
  KITRA_PACKAGE_NAMESPACE=1 KITRA_PACKAGE_SCRATCH="$scratch" \
    unshare -m --propagation private "$0" "$build" || status=$?
  exit $status
fi

# --- inside the namespace ---------------------------------------------------------------------
scratch="$KITRA_PACKAGE_SCRATCH"
deb="$(ls "$scratch"/package/kitra_*.deb)"
for folder in etc usr var; do
  mkdir -p "$scratch/$folder-upper" "$scratch/$folder-work"
  mount -t overlay overlay \
    -o "lowerdir=/$folder,upperdir=$scratch/$folder-upper,workdir=$scratch/$folder-work" "/$folder" ||
    { echo "skipped: overlays may not be mounted here"; exit 77; }
done
# The machine's systemd, if it runs, is not told about units of this scratch machine.
if [ -d /run/systemd ]; then mount -t tmpfs tmpfs /run/systemd; fi
export DEBIAN_FRONTEND=noninteractive
# The manual pages' index is not rebuilt after each step (the triggers stay pending here).
dpkg() { command dpkg --no-triggers "$@"; }
driver="MySQL ODBC 5.1 Driver"
registry=/etc/kitra/components.registry
data=/var/lib/kitra/backoffice

# A machine without the driver name, and without anything of the package, whatever this machine
# keeps of an earlier installation (its removal keeps the user kitra and the back office by
# design): they are taken out of the overlays only.
for folder in etc var; do
  findmnt -n -o OPTIONS --mountpoint "/$folder" | tail -n 1 | grep -qF "upperdir=$scratch/$folder-upper" ||
    fail "/$folder is not the scratch overlay"
done
if [ "$(dpkg-query -W -f='${db:Status-Status}' kitra 2>/dev/null || true)" != not-installed ] &&
   dpkg-query -W kitra >/dev/null 2>&1; then
  dpkg --purge --force-depends kitra >/dev/null 2>&1 || fail "could not purge the machine's own kitra"
fi
for file in /etc/passwd /etc/shadow /etc/group /etc/gshadow; do
  if [ -f "$file" ] && grep -q '^kitra:' "$file"; then sed -i '/^kitra:/d' "$file"; fi
done
rm -rf /var/lib/kitra /etc/kitra
if odbcinst -q -d -n "$driver" >/dev/null 2>&1; then odbcinst -u -d -n "$driver" >/dev/null; fi
if getent passwd kitra >/dev/null || getent group kitra >/dev/null; then
  fail "the user kitra is still known (from outside /etc/passwd?): $(getent passwd kitra)"
fi

installed="$(dpkg -i --force-depends "$deb" 2>&1)" || fail "dpkg -i: $installed"
getent passwd kitra | grep -q ":$data:/usr/sbin/nologin$" || fail "user kitra: $(getent passwd kitra)"
[ "$(stat -c '%a %U %G' "$data")" = "700 kitra kitra" ] || fail "data folder: $(stat -c '%a %U %G' "$data")"
contains "$(cat "$registry")" $'POSConnectorKitra.KitraConnector\t/usr/lib/kitra/POSConnectorKitra.so' "registry"
contains "$(cat "$registry")" $'KitraBackOffice.BusinessLayer\t/usr/lib/kitra/KitraBackOffice.so' "registry"
[ "$(stat -c %a "$registry")" = 644 ] || fail "the registry is not readable by every user"
odbcinst -q -d -n "$driver" >/dev/null 2>&1 || fail "the driver name was not registered"
[ ! -e /etc/systemd/system/timers.target.wants/kitra-import.timer ] || fail "the timer was enabled"

# The administrator's first steps, as the user kitra, with the installed program on the PATH:
# it finds the connector through the machine's registry.
created="$(runuser -u kitra -- env -u KITRA_COMPONENT_REGISTRY HOME="$data" \
  kitra-host --data "$data" init 2>&1)" || fail "init as kitra: $created"
info="$(runuser -u kitra -- env -u KITRA_COMPONENT_REGISTRY HOME="$data" \
  kitra-host --data "$data" info 2>&1)" || fail "info as kitra: $info"
contains "$info" "ConnectorID: " "info"
# It is the machine's registry that names the module: an entry naming another file is followed.
cp "$registry" "$scratch/registry"
sed 's|\t/usr/lib/kitra/|\t/usr/lib/nenhum/|' "$scratch/registry" >"$registry"
if elsewhere="$(runuser -u kitra -- env -u KITRA_COMPONENT_REGISTRY HOME="$data" \
    kitra-host --data "$data" info 2>&1)"; then
  fail "info did not follow the machine's registry: $elsewhere"
fi
contains "$elsewhere" "/usr/lib/nenhum/POSConnectorKitra.so" "info with another module registered"
cp "$scratch/registry" "$registry"
[ -z "$(find "$data" -perm /077)" ] || fail "open to others: $(find "$data" -perm /077)"

# The administrator enables the nightly timer (the link "systemctl enable" makes).
wants=/etc/systemd/system/timers.target.wants
mkdir -p "$wants"
ln -s /usr/lib/systemd/system/kitra-import.timer "$wants/kitra-import.timer"

# Installed again (an upgrade): the back office, the registrations and the enabled timer stay.
upgraded="$(dpkg -i --force-depends "$deb" 2>&1)" || fail "dpkg -i again: $upgraded"
[ -f "$data/backoffice.sqlite" ] || fail "the upgrade lost the back office"
contains "$(cat "$registry")" "/usr/lib/kitra/POSConnectorKitra.so" "registry after the upgrade"
odbcinst -q -d -n "$driver" >/dev/null 2>&1 || fail "the upgrade took the driver name away"
[ -L "$wants/kitra-import.timer" ] || fail "the upgrade disabled the timer"

# Removed: the connector's registration, the timer's link and the driver name (the package added
# it) go; the back office and the user stay.
removed="$(dpkg -r kitra 2>&1)" || fail "dpkg -r: $removed"
[ ! -e "$wants/kitra-import.timer" ] && [ ! -L "$wants/kitra-import.timer" ] ||
  fail "the removal left the timer enabled"
! grep -q POSConnectorKitra "$registry" || fail "the connector is still registered"
! grep -q KitraBackOffice "$registry" || fail "the back office's class is still registered"
! odbcinst -q -d -n "$driver" >/dev/null 2>&1 || fail "the driver name is still registered"
[ -f "$data/backoffice.sqlite" ] || fail "the removal deleted the back office"
purged="$(dpkg -P kitra 2>&1)" || fail "dpkg -P: $purged"
[ ! -e "$registry" ] || fail "the purge left $registry"
[ -f "$data/backoffice.sqlite" ] || fail "the purge deleted the back office"
getent passwd kitra >/dev/null || fail "the purge deleted the user kitra"

# A machine that registers the driver name itself keeps it after the package goes.
dpkg-deb --fsys-tarfile "$deb" | tar -xO ./usr/share/kitra/odbc/odbcinst.ini >"$scratch/driver.ini"
odbcinst -i -d -f "$scratch/driver.ini" >/dev/null
odbcinst -q -d -n "$driver" >/dev/null 2>&1 || fail "could not register the driver name beforehand"
dpkg -i --force-depends "$deb" >/dev/null 2>&1 || fail "dpkg -i on a machine with the driver name"
[ ! -e /var/lib/kitra/odbc-driver-added ] || fail "the package marked a driver name it did not add"
dpkg -P kitra >/dev/null 2>&1 || fail "dpkg -P on a machine with the driver name"
odbcinst -q -d -n "$driver" >/dev/null 2>&1 || fail "the purge took away a driver name it had not added"

echo "installed, upgraded, removed and purged as dpkg does it"
