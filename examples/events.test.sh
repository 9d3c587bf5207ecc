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

# Without a port each tells its usage; a stream that breaks is no success.
for program in send_event receive_event; do
    status=0
    "$1/$program" port 2>/dev/null || status=$?
    ((status == 2))
done
coproc receiver { exec "$1/receive_event" 0; }
receiver_id=$receiver_PID
read -r line <&"${receiver[0]}"
echo "no event" >"/dev/tcp/127.0.0.1/${line##* }"
! wait "$receiver_id"
