# Starts "$1/receive_event" at a port of the system's choice and lets "$1/send_event" send to it.
set -euo pipefail
coproc receiver { exec "$1/receive_event" 0; }
receiver_id=$receiver_PID
trap 'kill "$receiver_id" 2>/dev/null || true' EXIT
read -r line <&"${receiver[0]}"
exec {output}<&"${receiver[0]}"  # bash takes its own end away when the receiver ends
"$1/send_event" "${line##* }"
read -r line <&"$output"
[[ $line == "3 hello" ]]
wait "$receiver_id"
