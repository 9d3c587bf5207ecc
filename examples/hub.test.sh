# "$1/hub_server" relays what "$1/send_event" sends to "$1/hub_client", which is told its address, or finds it, and then
# also its successor, in a network of the test's own.
set -euo pipefail
programs=$1 interface=${2:-}
if [[ -z $interface ]]; then
    own_network() { ip link set lo up multicast on && ip route add 224.0.0.0/4 dev lo; }
    export -f own_network
    for enter in "unshare --net" "unshare --map-root-user --net"; do
        $enter bash -c own_network 2>/dev/null || continue
        exec $enter bash -c 'own_network && exec bash "$0" "$1" lo' "$0" "$programs"
    done
fi

ids=()
trap 'kill "${ids[@]}" 2>/dev/null || true' EXIT
start_server() {
    exec {server}< <(exec "$programs/hub_server" 0 $interface)
    ids+=($!)
    read -r -t 30 line <&"$server"
    port=${line##* }
}
start_client() {
    exec {client}< <(exec "$programs/hub_client" "$1")
    ids+=($!)
}
expect() {
    read -r -t 30 line <&"$client" || line=nothing
    [[ $line == "$1" ]] || { echo "got '$line' instead of '$1'"; exit 1; }
}

start_server
start_client "127.0.0.1:$port"
expect connected
"$programs/send_event" "$port"
expect "3 hello"
kill "${ids[0]}"
expect lost
kill "${ids[1]}"

if [[ -n $interface ]]; then
    start_client "$interface"
    for i in 1 2; do
        start_server
        expect connected
        "$programs/send_event" "$port"
        expect "3 hello"
        kill "${ids[-1]}"
        expect lost
    done
fi

# Wrong arguments are told, and so is nobody there.
for command in "hub_server port" "hub_server 0 nowhere0" hub_client "hub_client nowhere0" "hub_client 127.0.0.1:$port"; do
    if "$programs/"$command 2>/dev/null; then
        echo "$command did not fail"
        exit 1
    fi
done
