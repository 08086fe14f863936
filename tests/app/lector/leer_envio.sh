#!/bin/bash
# The compose screen as a screen reader meets it: the program runs on a
# virtual display with a session bus and the accessibility registry, against
# the platform simulator, and leer_envio.py reads it over the bus; then
# recorrer_pantallas.py opens the other screens from the keyboard (xdotool)
# and walks each one with Tab, Enter and Escape.
# Usage: leer_envio.sh BUILD_DIR. Exit 77 (skipped) without the tools.
set -uo pipefail
build="$1"
aqui="$(cd "$(dirname "$0")" && pwd)"
for orden in xvfb-run dbus-run-session sqlite3 xdotool /usr/bin/python3; do
    command -v "$orden" >/dev/null || { echo "sin $orden"; exit 77; }
done
/usr/bin/python3 -c 'import pyatspi' 2>/dev/null || { echo "sin python3-pyatspi"; exit 77; }
[ -x /usr/libexec/at-spi-bus-launcher ] || { echo "sin at-spi2-core"; exit 77; }

tmp="$(mktemp -d)"
trap 'rm -rf "$tmp"' EXIT
export XDG_CONFIG_HOME="$tmp/config" XDG_DATA_HOME="$tmp/data" HOME="$tmp"
datos="$XDG_DATA_HOME/Quelmo/Quelmo Mensajes SMS"
mkdir -p "$datos" "$XDG_CONFIG_HOME/Quelmo"

# The platform answers the first run's balance query, so no box stands
# before the compose screen.
"$build/bin/sms-platform-sim" --port 0 --config "$build/bin/sms-platform-sim.ini" >"$tmp/sim.log" 2>&1 &
sim=$!
puerto=""
for _ in $(seq 100); do
    puerto="$(sed -n 's|.*http://127.0.0.1:\([0-9]*\)/.*|\1|p' "$tmp/sim.log")"
    [ -n "$puerto" ] && break
    sleep 0.1
done
[ -n "$puerto" ] || { echo "el simulador no arrancó"; cat "$tmp/sim.log"; kill "$sim"; exit 1; }
host="http://127.0.0.1:$puerto"
install -m 600 "$build/share/quelmo-sms/mensajes.db" "$datos/mensajes.db"
# The password "demo", stored encoded.
sqlite3 "$datos/mensajes.db" "insert into canales (canal,nombre,maxmen,puerto,host,usuario,clave,
    saldo,principal,remitente,remopc,tini,tfin,imptextos,movil) values (1,'Demo',0,80,'$host',
    'demo','nowy',100,1,'',0,'','',0,'0034600123456')"
printf '[BD]\nPath=%s\n[Tr]\nActivo=1\n[Despliegue]\nPlataforma=%s/\n' "$datos/mensajes.db" \
    "$host" >"$XDG_CONFIG_HOME/Quelmo/Quelmo Mensajes SMS.ini"

unset QT_QPA_PLATFORM
export QT_LINUX_ACCESSIBILITY_ALWAYS_ON=1 QT_ACCESSIBILITY=1 NO_AT_BRIDGE=0
xvfb-run -a dbus-run-session -- bash -c '
    "$1/bin/quelmo-sms" >"$3/programa.log" 2>&1 &
    programa=$!
    /usr/bin/python3 -u "$2/leer_envio.py" && /usr/bin/python3 -u "$2/recorrer_pantallas.py"
    rc=$?
    kill "$programa" 2>/dev/null
    wait "$programa" 2>/dev/null
    exit $rc
' lector "$build" "$aqui" "$tmp"
rc=$?
kill "$sim" 2>/dev/null
wait "$sim" 2>/dev/null
[ $rc -eq 0 ] || { echo "--- programa:"; cat "$tmp/programa.log"; }
exit $rc
